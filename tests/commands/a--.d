-: /usr/include/GNUstep/AppKit/AppKit.h \
 /usr/include/GNUstep/GNUstepBase/GSVersionMacros.h \
 /usr/include/GNUstep/GNUstepBase/GSConfig.h \
 /usr/include/GNUstep/GNUstepGUI/GSVersion.h \
 /usr/include/GNUstep/Foundation/Foundation.h \
 /usr/include/GNUstep/Foundation/FoundationErrors.h \
 /usr/include/GNUstep/Foundation/NSObject.h \
 /usr/include/GNUstep/Foundation/NSObjCRuntime.h \
 /usr/include/GNUstep/GNUstepBase/GNUstep.h \
 /usr/include/GNUstep/GNUstepBase/GSBlocks.h \
 /usr/include/GNUstep/GNUstepBase/GSObjCRuntime.h \
 /usr/include/GNUstep/Foundation/NSZone.h \
 /usr/include/GNUstep/Foundation/NSDate.h \
 /usr/include/GNUstep/GNUstepBase/NSObject+GNUstepBase.h \
 /usr/include/GNUstep/Foundation/FoundationLegacySwiftCompatibility.h \
 /usr/include/GNUstep/Foundation/NSDebug.h \
 /usr/include/GNUstep/GNUstepBase/NSDebug+GNUstepBase.h \
 /usr/include/GNUstep/Foundation/NSProcessInfo.h \
 /usr/include/GNUstep/GNUstepBase/NSProcessInfo+GNUstepBase.h \
 /usr/include/GNUstep/Foundation/NSAffineTransform.h \
 /usr/include/GNUstep/Foundation/NSGeometry.h \
 /usr/include/GNUstep/Foundation/NSString.h \
 /usr/include/GNUstep/Foundation/NSRange.h \
 /usr/include/GNUstep/GNUstepBase/NSString+GNUstepBase.h \
 /usr/include/GNUstep/GNUstepBase/NSMutableString+GNUstepBase.h \
 /usr/include/GNUstep/Foundation/NSAppleEventDescriptor.h \
 /usr/include/GNUstep/Foundation/NSAppleEventManager.h \
 /usr/include/GNUstep/Foundation/NSAppleScript.h \
 /usr/include/GNUstep/Foundation/NSArchiver.h \
 /usr/include/GNUstep/Foundation/NSCoder.h \
 /usr/include/GNUstep/Foundation/NSSet.h \
 /usr/include/GNUstep/Foundation/NSEnumerator.h \
 /usr/include/GNUstep/Foundation/NSArray.h \
 /usr/include/GNUstep/GNUstepBase/NSArray+GNUstepBase.h \
 /usr/include/GNUstep/Foundation/NSAttributedString.h \
 /usr/include/GNUstep/Foundation/NSDictionary.h \
 /usr/include/GNUstep/GNUstepBase/NSAttributedString+GNUstepBase.h \
 /usr/include/GNUstep/Foundation/NSAutoreleasePool.h \
 /usr/include/GNUstep/Foundation/NSBackgroundActivityScheduler.h \
 /usr/include/GNUstep/Foundation/NSBundle.h \
 /usr/include/GNUstep/GNUstepBase/NSBundle+GNUstepBase.h \
 /usr/include/GNUstep/Foundation/NSByteOrder.h \
 /usr/include/GNUstep/Foundation/NSCache.h \
 /usr/include/GNUstep/Foundation/NSCalendar.h \
 /usr/include/GNUstep/Foundation/NSCalendarDate.h \
 /usr/include/GNUstep/GNUstepBase/NSCalendarDate+GNUstepBase.h \
 /usr/include/GNUstep/Foundation/NSCharacterSet.h \
 /usr/include/GNUstep/Foundation/NSClassDescription.h \
 /usr/include/GNUstep/Foundation/NSException.h \
 /usr/include/GNUstep/Foundation/NSComparisonPredicate.h \
 /usr/include/GNUstep/Foundation/NSExpression.h \
 /usr/include/GNUstep/Foundation/NSPredicate.h \
 /usr/include/GNUstep/Foundation/NSCompoundPredicate.h \
 /usr/include/GNUstep/Foundation/NSConnection.h \
 /usr/include/GNUstep/Foundation/NSTimer.h \
 /usr/include/GNUstep/Foundation/NSRunLoop.h \
 /usr/include/GNUstep/Foundation/NSMapTable.h \
 /usr/include/GNUstep/Foundation/NSPointerFunctions.h \
 /usr/include/GNUstep/Foundation/NSData.h \
 /usr/include/GNUstep/Foundation/NSSerialization.h \
 /usr/include/GNUstep/GNUstepBase/NSData+GNUstepBase.h \
 /usr/include/GNUstep/Foundation/NSDateComponentsFormatter.h \
 /usr/include/GNUstep/Foundation/NSFormatter.h \
 /usr/include/GNUstep/Foundation/NSDateFormatter.h \
 /usr/include/GNUstep/Foundation/NSDateInterval.h \
 /usr/include/GNUstep/Foundation/NSDateIntervalFormatter.h \
 /usr/include/GNUstep/Foundation/NSDecimalNumber.h \
 /usr/include/GNUstep/Foundation/NSDecimal.h \
 /usr/include/GNUstep/Foundation/NSValue.h \
 /usr/include/GNUstep/GNUstepBase/NSNumber+GNUstepBase.h \
 /usr/include/GNUstep/Foundation/NSDistantObject.h \
 /usr/include/GNUstep/Foundation/NSProxy.h \
 /usr/include/GNUstep/Foundation/NSDistributedLock.h \
 /usr/include/GNUstep/Foundation/NSDistributedNotificationCenter.h \
 /usr/include/GNUstep/Foundation/NSLock.h \
 /usr/include/GNUstep/GNUstepBase/NSLock+GNUstepBase.h \
 /usr/include/GNUstep/Foundation/NSNotification.h \
 /usr/include/GNUstep/Foundation/NSEnergyFormatter.h \
 /usr/include/GNUstep/Foundation/NSError.h \
 /usr/include/GNUstep/Foundation/NSExtensionContext.h \
 /usr/include/GNUstep/Foundation/NSExtensionItem.h \
 /usr/include/GNUstep/Foundation/NSExtensionRequestHandling.h \
 /usr/include/GNUstep/Foundation/NSFileCoordinator.h \
 /usr/include/GNUstep/Foundation/NSURL.h \
 /usr/include/GNUstep/Foundation/NSURLHandle.h \
 /usr/include/GNUstep/GNUstepBase/NSURL+GNUstepBase.h \
 /usr/include/GNUstep/Foundation/NSFileHandle.h \
 /usr/include/GNUstep/GNUstepBase/NSFileHandle+GNUstepBase.h \
 /usr/include/GNUstep/Foundation/NSFileManager.h \
 /usr/include/GNUstep/Foundation/NSPathUtilities.h \
 /usr/include/GNUstep/Foundation/NSFilePresenter.h \
 /usr/include/GNUstep/Foundation/NSFileVersion.h \
 /usr/include/GNUstep/Foundation/NSFileWrapper.h \
 /usr/include/GNUstep/Foundation/NSGarbageCollector.h \
 /usr/include/GNUstep/Foundation/NSHashTable.h \
 /usr/include/GNUstep/Foundation/NSHFSFileTypes.h \
 /usr/include/GNUstep/Foundation/NSHost.h \
 /usr/include/GNUstep/Foundation/NSHTTPCookie.h \
 /usr/include/GNUstep/Foundation/NSHTTPCookieStorage.h \
 /usr/include/GNUstep/Foundation/NSIndexPath.h \
 /usr/include/GNUstep/Foundation/NSIndexSet.h \
 /usr/include/GNUstep/Foundation/NSInvocation.h \
 /usr/include/GNUstep/Foundation/NSMethodSignature.h \
 /usr/include/GNUstep/Foundation/NSInvocationOperation.h \
 /usr/include/GNUstep/Foundation/NSOperation.h \
 /usr/include/GNUstep/Foundation/NSISO8601DateFormatter.h \
 /usr/include/GNUstep/Foundation/NSItemProvider.h \
 /usr/include/GNUstep/Foundation/NSItemProviderReadingWriting.h \
 /usr/include/GNUstep/Foundation/NSJSONSerialization.h \
 /usr/include/GNUstep/Foundation/NSKeyedArchiver.h \
 /usr/include/GNUstep/Foundation/NSPropertyList.h \
 /usr/include/GNUstep/Foundation/NSKeyValueCoding.h \
 /usr/include/GNUstep/Foundation/NSKeyValueObserving.h \
 /usr/include/GNUstep/Foundation/NSLengthFormatter.h \
 /usr/include/GNUstep/Foundation/NSLinguisticTagger.h \
 /usr/include/GNUstep/Foundation/NSLocale.h \
 /usr/include/GNUstep/Foundation/NSMeasurement.h \
 /usr/include/GNUstep/Foundation/NSMeasurementFormatter.h \
 /usr/include/GNUstep/Foundation/NSMetadata.h \
 /usr/include/GNUstep/Foundation/NSMetadataAttributes.h \
 /usr/include/GNUstep/Foundation/NSNotificationQueue.h \
 /usr/include/GNUstep/Foundation/NSNetServices.h \
 /usr/include/GNUstep/GNUstepBase/NSNetServices+GNUstepBase.h \
 /usr/include/GNUstep/Foundation/NSNull.h \
 /usr/include/GNUstep/Foundation/NSNumberFormatter.h \
 /usr/include/GNUstep/Foundation/NSObjectScripting.h \
 /usr/include/GNUstep/Foundation/NSOrderedSet.h \
 /usr/include/GNUstep/Foundation/NSOrthography.h \
 /usr/include/GNUstep/Foundation/NSPersonNameComponents.h \
 /usr/include/GNUstep/Foundation/NSPersonNameComponentsFormatter.h \
 /usr/include/GNUstep/Foundation/NSPointerArray.h \
 /usr/include/GNUstep/Foundation/NSPortCoder.h \
 /usr/include/GNUstep/Foundation/NSPortMessage.h \
 /usr/include/GNUstep/Foundation/NSPort.h \
 /usr/include/GNUstep/Foundation/NSPortNameServer.h \
 /usr/include/GNUstep/Foundation/NSProgress.h \
 /usr/include/GNUstep/Foundation/NSProtocolChecker.h \
 /usr/include/GNUstep/Foundation/NSRegularExpression.h \
 /usr/include/GNUstep/Foundation/NSScanner.h \
 /usr/include/GNUstep/Foundation/NSScriptClassDescription.h \
 /usr/include/GNUstep/Foundation/NSScriptCoercionHandler.h \
 /usr/include/GNUstep/Foundation/NSScriptCommand.h \
 /usr/include/GNUstep/Foundation/NSScriptCommandDescription.h \
 /usr/include/GNUstep/Foundation/NSScriptExecutionContext.h \
 /usr/include/GNUstep/Foundation/NSScriptKeyValueCoding.h \
 /usr/include/GNUstep/Foundation/NSScriptObjectSpecifiers.h \
 /usr/include/GNUstep/Foundation/NSScriptStandardSuiteCommands.h \
 /usr/include/GNUstep/Foundation/NSScriptSuiteRegistry.h \
 /usr/include/GNUstep/Foundation/NSScriptWhoseTests.h \
 /usr/include/GNUstep/Foundation/NSSortDescriptor.h \
 /usr/include/GNUstep/Foundation/NSSpellServer.h \
 /usr/include/GNUstep/Foundation/NSStream.h \
 /usr/include/GNUstep/GNUstepBase/NSStream+GNUstepBase.h \
 /usr/include/GNUstep/Foundation/NSTask.h \
 /usr/include/GNUstep/GNUstepBase/NSTask+GNUstepBase.h \
 /usr/include/GNUstep/Foundation/NSTextCheckingResult.h \
 /usr/include/GNUstep/Foundation/NSThread.h \
 /usr/include/GNUstep/GNUstepBase/NSThread+GNUstepBase.h \
 /usr/include/GNUstep/Foundation/NSTimeZone.h \
 /usr/include/GNUstep/Foundation/NSUbiquitousKeyValueStore.h \
 /usr/include/GNUstep/Foundation/NSUndoManager.h \
 /usr/include/GNUstep/Foundation/NSUnit.h \
 /usr/include/GNUstep/Foundation/NSUserActivity.h \
 /usr/include/GNUstep/Foundation/NSURLAuthenticationChallenge.h \
 /usr/include/GNUstep/Foundation/NSURLCache.h \
 /usr/include/GNUstep/Foundation/NSURLConnection.h \
 /usr/include/GNUstep/Foundation/NSURLCredential.h \
 /usr/include/GNUstep/Foundation/NSURLCredentialStorage.h \
 /usr/include/GNUstep/Foundation/NSURLDownload.h \
 /usr/include/GNUstep/Foundation/NSURLError.h \
 /usr/include/GNUstep/Foundation/NSURLProtectionSpace.h \
 /usr/include/GNUstep/Foundation/NSURLProtocol.h \
 /usr/include/GNUstep/Foundation/NSURLRequest.h \
 /usr/include/GNUstep/Foundation/NSURLResponse.h \
 /usr/include/GNUstep/Foundation/NSURLSession.h \
 /usr/include/GNUstep/Foundation/NSUserDefaults.h \
 /usr/include/GNUstep/Foundation/NSUserNotification.h \
 /usr/include/GNUstep/Foundation/NSUUID.h \
 /usr/include/GNUstep/Foundation/NSValueTransformer.h \
 /usr/include/GNUstep/Foundation/NSXMLDocument.h \
 /usr/include/GNUstep/Foundation/NSXMLNode.h \
 /usr/include/GNUstep/Foundation/NSXMLNodeOptions.h \
 /usr/include/GNUstep/Foundation/NSXMLDTD.h \
 /usr/include/GNUstep/Foundation/NSXMLDTDNode.h \
 /usr/include/GNUstep/Foundation/NSXMLElement.h \
 /usr/include/GNUstep/Foundation/NSXMLParser.h \
 /usr/include/GNUstep/Foundation/NSXPCConnection.h \
 /usr/include/GNUstep/AppKit/AppKitErrors.h \
 /usr/include/GNUstep/AppKit/NSGraphics.h \
 /usr/include/GNUstep/AppKit/NSGraphicsContext.h \
 /usr/include/GNUstep/AppKit/AppKitDefines.h \
 /usr/include/GNUstep/GNUstepGUI/GSMethodTable.h \
 /usr/include/GNUstep/AppKit/NSFont.h \
 /usr/include/GNUstep/AppKit/NSColor.h \
 /usr/include/GNUstep/AppKit/NSAccessibility.h \
 /usr/include/GNUstep/AppKit/NSAccessibilityConstants.h \
 /usr/include/GNUstep/AppKit/NSAccessibilityCustomAction.h \
 /usr/include/GNUstep/AppKit/NSAccessibilityCustomRotor.h \
 /usr/include/GNUstep/AppKit/NSAccessibilityProtocols.h \
 /usr/include/GNUstep/AppKit/NSAccessibilityElement.h \
 /usr/include/GNUstep/AppKit/NSActionCell.h \
 /usr/include/GNUstep/AppKit/NSCell.h \
 /usr/include/GNUstep/AppKit/NSParagraphStyle.h \
 /usr/include/GNUstep/AppKit/NSText.h \
 /usr/include/GNUstep/AppKit/NSView.h \
 /usr/include/GNUstep/AppKit/NSResponder.h \
 /usr/include/GNUstep/AppKit/NSInterfaceStyle.h \
 /usr/include/GNUstep/AppKit/NSUserInterfaceLayout.h \
 /usr/include/GNUstep/AppKit/NSSpellProtocol.h \
 /usr/include/GNUstep/AppKit/NSAnimationContext.h \
 /usr/include/GNUstep/AppKit/NSAppearance.h \
 /usr/include/GNUstep/AppKit/NSApplication.h \
 /usr/include/GNUstep/AppKit/NSUserInterfaceValidation.h \
 /usr/include/GNUstep/AppKit/NSAttributedString.h \
 /usr/include/GNUstep/AppKit/NSFontManager.h \
 /usr/include/GNUstep/AppKit/NSBitmapImageRep.h \
 /usr/include/GNUstep/AppKit/NSImageRep.h \
 /usr/include/GNUstep/AppKit/NSBox.h \
 /usr/include/GNUstep/AppKit/NSBrowser.h \
 /usr/include/GNUstep/AppKit/NSControl.h \
 /usr/include/GNUstep/AppKit/NSBrowserCell.h \
 /usr/include/GNUstep/AppKit/NSButton.h \
 /usr/include/GNUstep/AppKit/NSButtonCell.h \
 /usr/include/GNUstep/AppKit/NSCachedImageRep.h \
 /usr/include/GNUstep/AppKit/NSCIImageRep.h \
 /usr/include/GNUstep/AppKit/NSClipView.h \
 /usr/include/GNUstep/AppKit/NSCollectionView.h \
 /usr/include/GNUstep/AppKit/NSDragging.h \
 /usr/include/GNUstep/AppKit/NSNibDeclarations.h \
 /usr/include/GNUstep/AppKit/NSCollectionViewItem.h \
 /usr/include/GNUstep/AppKit/NSImageView.h \
 /usr/include/GNUstep/AppKit/NSImageCell.h \
 /usr/include/GNUstep/AppKit/NSTextField.h \
 /usr/include/GNUstep/AppKit/NSTextFieldCell.h \
 /usr/include/GNUstep/AppKit/NSViewController.h \
 /usr/include/GNUstep/AppKit/NSSeguePerforming.h \
 /usr/include/GNUstep/AppKit/NSStoryboardSegue.h \
 /usr/include/GNUstep/AppKit/NSPopover.h \
 /usr/include/GNUstep/AppKit/NSColorList.h \
 /usr/include/GNUstep/AppKit/NSColorPanel.h \
 /usr/include/GNUstep/AppKit/NSColorPicking.h \
 /usr/include/GNUstep/AppKit/NSColorWell.h \
 /usr/include/GNUstep/AppKit/NSPanel.h \
 /usr/include/GNUstep/AppKit/NSWindow.h \
 /usr/include/GNUstep/AppKit/NSColorPicker.h \
 /usr/include/GNUstep/AppKit/NSCursor.h \
 /usr/include/GNUstep/AppKit/NSCustomImageRep.h \
 /usr/include/GNUstep/AppKit/NSDataAsset.h \
 /usr/include/GNUstep/AppKit/NSDataLink.h \
 /usr/include/GNUstep/AppKit/NSDataLinkManager.h \
 /usr/include/GNUstep/AppKit/NSDataLinkPanel.h \
 /usr/include/GNUstep/AppKit/NSEPSImageRep.h \
 /usr/include/GNUstep/AppKit/NSEvent.h \
 /usr/include/GNUstep/AppKit/NSFontPanel.h \
 /usr/include/GNUstep/AppKit/NSForm.h \
 /usr/include/GNUstep/AppKit/NSMatrix.h \
 /usr/include/GNUstep/AppKit/NSFormCell.h \
 /usr/include/GNUstep/AppKit/NSHelpPanel.h \
 /usr/include/GNUstep/AppKit/NSImage.h \
 /usr/include/GNUstep/AppKit/NSMenu.h \
 /usr/include/GNUstep/AppKit/NSMenuItem.h \
 /usr/include/GNUstep/AppKit/NSMenuItemCell.h \
 /usr/include/GNUstep/AppKit/NSMenuView.h \
 /usr/include/GNUstep/AppKit/NSNibLoading.h \
 /usr/include/GNUstep/AppKit/NSOpenPanel.h \
 /usr/include/GNUstep/AppKit/NSSavePanel.h \
 /usr/include/GNUstep/AppKit/NSPageLayout.h \
 /usr/include/GNUstep/AppKit/NSPasteboard.h \
 /usr/include/GNUstep/AppKit/NSPasteboardItem.h \
 /usr/include/GNUstep/AppKit/NSPDFInfo.h \
 /usr/include/GNUstep/AppKit/NSPrintInfo.h \
 /usr/include/GNUstep/AppKit/NSPDFImageRep.h \
 /usr/include/GNUstep/AppKit/NSPDFPanel.h \
 /usr/include/GNUstep/AppKit/NSPICTImageRep.h \
 /usr/include/GNUstep/AppKit/NSPopUpButton.h \
 /usr/include/GNUstep/AppKit/NSPopUpButtonCell.h \
 /usr/include/GNUstep/AppKit/NSPrinter.h \
 /usr/include/GNUstep/AppKit/NSPrintOperation.h \
 /usr/include/GNUstep/AppKit/NSPrintPanel.h \
 /usr/include/GNUstep/AppKit/NSRunningApplication.h \
 /usr/include/GNUstep/AppKit/NSWorkspace.h \
 /usr/include/GNUstep/AppKit/NSScreen.h \
 /usr/include/GNUstep/AppKit/NSScroller.h \
 /usr/include/GNUstep/AppKit/NSScrollView.h \
 /usr/include/GNUstep/AppKit/NSScrubber.h \
 /usr/include/GNUstep/AppKit/NSScrubberItemView.h \
 /usr/include/GNUstep/AppKit/NSScrubberLayout.h \
 /usr/include/GNUstep/AppKit/NSSelection.h \
 /usr/include/GNUstep/AppKit/NSSharingService.h \
 /usr/include/GNUstep/AppKit/NSSlider.h \
 /usr/include/GNUstep/AppKit/NSSliderCell.h \
 /usr/include/GNUstep/AppKit/NSSpellChecker.h \
 /usr/include/GNUstep/AppKit/NSSplitView.h \
 /usr/include/GNUstep/AppKit/NSStatusBar.h \
 /usr/include/GNUstep/AppKit/NSStatusBarButton.h \
 /usr/include/GNUstep/AppKit/NSStatusItem.h \
 /usr/include/GNUstep/AppKit/NSStringDrawing.h \
 /usr/include/GNUstep/AppKit/NSAlert.h \
 /usr/include/GNUstep/AppKit/NSAnimation.h \
 /usr/include/GNUstep/GNUstepGUI/GSAnimator.h \
 /usr/include/GNUstep/AppKit/NSAffineTransform.h \
 /usr/include/GNUstep/AppKit/NSArrayController.h \
 /usr/include/GNUstep/AppKit/NSObjectController.h \
 /usr/include/GNUstep/AppKit/NSController.h \
 /usr/include/GNUstep/AppKit/NSBezierPath.h \
 /usr/include/GNUstep/AppKit/NSButtonTouchBarItem.h \
 /usr/include/GNUstep/AppKit/NSTouchBarItem.h \
 /usr/include/GNUstep/AppKit/NSColorSampler.h \
 /usr/include/GNUstep/AppKit/NSColorSpace.h \
 /usr/include/GNUstep/AppKit/NSComboBox.h \
 /usr/include/GNUstep/AppKit/NSComboBoxCell.h \
 /usr/include/GNUstep/AppKit/NSCandidateListTouchBarItem.h \
 /usr/include/GNUstep/AppKit/NSClickGestureRecognizer.h \
 /usr/include/GNUstep/AppKit/NSGestureRecognizer.h \
 /usr/include/GNUstep/AppKit/NSColorPickerTouchBarItem.h \
 /usr/include/GNUstep/AppKit/NSCustomTouchBarItem.h \
 /usr/include/GNUstep/AppKit/NSDatePicker.h \
 /usr/include/GNUstep/AppKit/NSDatePickerCell.h \
 /usr/include/GNUstep/AppKit/NSDockTile.h \
 /usr/include/GNUstep/AppKit/NSDocument.h \
 /usr/include/GNUstep/AppKit/NSDocumentController.h \
 /usr/include/GNUstep/AppKit/NSDrawer.h \
 /usr/include/GNUstep/AppKit/NSFileWrapperExtensions.h \
 /usr/include/GNUstep/AppKit/NSFontAssetRequest.h \
 /usr/include/GNUstep/AppKit/NSFontCollection.h \
 /usr/include/GNUstep/AppKit/NSFontDescriptor.h \
 /usr/include/GNUstep/AppKit/NSGlyphGenerator.h \
 /usr/include/GNUstep/AppKit/NSGradient.h \
 /usr/include/GNUstep/AppKit/NSGridView.h \
 /usr/include/GNUstep/AppKit/NSGroupTouchBarItem.h \
 /usr/include/GNUstep/AppKit/NSHelpManager.h \
 /usr/include/GNUstep/AppKit/NSInputManager.h \
 /usr/include/GNUstep/AppKit/NSInputServer.h \
 /usr/include/GNUstep/AppKit/NSKeyValueBinding.h \
 /usr/include/GNUstep/AppKit/NSLayoutAnchor.h \
 /usr/include/GNUstep/AppKit/NSLayoutConstraint.h \
 /usr/include/GNUstep/AppKit/NSLayoutGuide.h \
 /usr/include/GNUstep/AppKit/NSUserInterfaceItemIdentification.h \
 /usr/include/GNUstep/AppKit/NSLayoutManager.h \
 /usr/include/GNUstep/GNUstepGUI/GSLayoutManager.h \
 /usr/include/GNUstep/AppKit/NSTextView.h \
 /usr/include/GNUstep/AppKit/NSTextFinder.h \
 /usr/include/GNUstep/AppKit/NSTextAttachment.h \
 /usr/include/GNUstep/AppKit/NSLevelIndicator.h \
 /usr/include/GNUstep/AppKit/NSLevelIndicatorCell.h \
 /usr/include/GNUstep/AppKit/NSMagnificationGestureRecognizer.h \
 /usr/include/GNUstep/AppKit/NSMediaLibraryBrowserController.h \
 /usr/include/GNUstep/AppKit/NSMovie.h \
 /usr/include/GNUstep/AppKit/NSMovieView.h \
 /usr/include/GNUstep/AppKit/NSPageController.h \
 /usr/include/GNUstep/AppKit/NSPanGestureRecognizer.h \
 /usr/include/GNUstep/AppKit/NSNib.h \
 /usr/include/GNUstep/AppKit/NSNibControlConnector.h \
 /usr/include/GNUstep/AppKit/NSNibConnector.h \
 /usr/include/GNUstep/AppKit/NSNibOutletConnector.h \
 /usr/include/GNUstep/AppKit/NSOpenGL.h \
 /usr/include/GNUstep/AppKit/NSOpenGLView.h \
 /usr/include/GNUstep/AppKit/NSOutlineView.h \
 /usr/include/GNUstep/AppKit/NSTableView.h \
 /usr/include/GNUstep/AppKit/NSPersistentDocument.h \
 /usr/include/GNUstep/AppKit/NSPathControl.h \
 /usr/include/GNUstep/AppKit/NSPathCell.h \
 /usr/include/GNUstep/AppKit/NSPathComponentCell.h \
 /usr/include/GNUstep/AppKit/NSPathControlItem.h \
 /usr/include/GNUstep/AppKit/NSPickerTouchBarItem.h \
 /usr/include/GNUstep/AppKit/NSPredicateEditor.h \
 /usr/include/GNUstep/AppKit/NSRuleEditor.h \
 /usr/include/GNUstep/AppKit/NSPredicateEditorRowTemplate.h \
 /usr/include/GNUstep/AppKit/NSProgressIndicator.h \
 /usr/include/GNUstep/AppKit/NSPopoverTouchBarItem.h \
 /usr/include/GNUstep/AppKit/NSPressGestureRecognizer.h \
 /usr/include/GNUstep/AppKit/NSRulerMarker.h \
 /usr/include/GNUstep/AppKit/NSRulerView.h \
 /usr/include/GNUstep/AppKit/NSRotationGestureRecognizer.h \
 /usr/include/GNUstep/AppKit/NSSearchField.h \
 /usr/include/GNUstep/AppKit/NSSearchFieldCell.h \
 /usr/include/GNUstep/AppKit/NSSecureTextField.h \
 /usr/include/GNUstep/AppKit/NSSegmentedCell.h \
 /usr/include/GNUstep/AppKit/NSSegmentedControl.h \
 /usr/include/GNUstep/AppKit/NSShadow.h \
 /usr/include/GNUstep/AppKit/NSSharingServicePickerToolbarItem.h \
 /usr/include/GNUstep/AppKit/NSToolbarItem.h \
 /usr/include/GNUstep/AppKit/NSSharingServicePickerTouchBarItem.h \
 /usr/include/GNUstep/AppKit/NSSliderTouchBarItem.h \
 /usr/include/GNUstep/AppKit/NSSound.h \
 /usr/include/GNUstep/GNUstepGUI/GSSoundSource.h \
 /usr/include/GNUstep/GNUstepGUI/GSSoundSink.h \
 /usr/include/GNUstep/AppKit/NSSpeechRecognizer.h \
 /usr/include/GNUstep/AppKit/NSSpeechSynthesizer.h \
 /usr/include/GNUstep/AppKit/NSStepperTouchBarItem.h \
 /usr/include/GNUstep/AppKit/NSStepper.h \
 /usr/include/GNUstep/AppKit/NSStepperCell.h \
 /usr/include/GNUstep/AppKit/NSStoryboard.h \
 /usr/include/GNUstep/AppKit/NSSwitch.h \
 /usr/include/GNUstep/AppKit/NSSplitViewController.h \
 /usr/include/GNUstep/AppKit/NSSplitViewItem.h \
 /usr/include/GNUstep/AppKit/NSTableColumn.h \
 /usr/include/GNUstep/AppKit/NSTableHeaderCell.h \
 /usr/include/GNUstep/AppKit/NSTableHeaderView.h \
 /usr/include/GNUstep/AppKit/NSTabView.h \
 /usr/include/GNUstep/AppKit/NSTabViewController.h \
 /usr/include/GNUstep/AppKit/NSToolbar.h \
 /usr/include/GNUstep/AppKit/NSTabViewItem.h \
 /usr/include/GNUstep/AppKit/NSTextAlternatives.h \
 /usr/include/GNUstep/AppKit/NSTextContainer.h \
 /usr/include/GNUstep/AppKit/NSTextCheckingClient.h \
 /usr/include/GNUstep/AppKit/NSTextInputClient.h \
 /usr/include/GNUstep/AppKit/NSTextCheckingController.h \
 /usr/include/GNUstep/AppKit/NSTextInputContext.h \
 /usr/include/GNUstep/AppKit/NSTextList.h \
 /usr/include/GNUstep/AppKit/NSTextStorage.h \
 /usr/include/GNUstep/AppKit/NSTextTable.h \
 /usr/include/GNUstep/AppKit/NSTouch.h \
 /usr/include/GNUstep/AppKit/NSTouchBar.h \
 /usr/include/GNUstep/AppKit/NSTokenField.h \
 /usr/include/GNUstep/AppKit/NSTokenFieldCell.h \
 /usr/include/GNUstep/AppKit/NSToolbarItemGroup.h \
 /usr/include/GNUstep/AppKit/NSTrackingArea.h \
 /usr/include/GNUstep/AppKit/NSTreeController.h \
 /usr/include/GNUstep/AppKit/NSTreeNode.h \
 /usr/include/GNUstep/AppKit/NSUserDefaultsController.h \
 /usr/include/GNUstep/AppKit/NSUserInterfaceCompression.h \
 /usr/include/GNUstep/AppKit/NSUserInterfaceItemSearching.h \
 /usr/include/GNUstep/AppKit/NSVisualEffectView.h \
 /usr/include/GNUstep/AppKit/NSWindowController.h \
 /usr/include/GNUstep/AppKit/PSOperators.h \
 /usr/include/GNUstep/AppKit/DPSOperators.h
/usr/include/GNUstep/GNUstepBase/GSVersionMacros.h:
/usr/include/GNUstep/GNUstepBase/GSConfig.h:
/usr/include/GNUstep/GNUstepGUI/GSVersion.h:
/usr/include/GNUstep/Foundation/Foundation.h:
/usr/include/GNUstep/Foundation/FoundationErrors.h:
/usr/include/GNUstep/Foundation/NSObject.h:
/usr/include/GNUstep/Foundation/NSObjCRuntime.h:
/usr/include/GNUstep/GNUstepBase/GNUstep.h:
/usr/include/GNUstep/GNUstepBase/GSBlocks.h:
/usr/include/GNUstep/GNUstepBase/GSObjCRuntime.h:
/usr/include/GNUstep/Foundation/NSZone.h:
/usr/include/GNUstep/Foundation/NSDate.h:
/usr/include/GNUstep/GNUstepBase/NSObject+GNUstepBase.h:
/usr/include/GNUstep/Foundation/FoundationLegacySwiftCompatibility.h:
/usr/include/GNUstep/Foundation/NSDebug.h:
/usr/include/GNUstep/GNUstepBase/NSDebug+GNUstepBase.h:
/usr/include/GNUstep/Foundation/NSProcessInfo.h:
/usr/include/GNUstep/GNUstepBase/NSProcessInfo+GNUstepBase.h:
/usr/include/GNUstep/Foundation/NSAffineTransform.h:
/usr/include/GNUstep/Foundation/NSGeometry.h:
/usr/include/GNUstep/Foundation/NSString.h:
/usr/include/GNUstep/Foundation/NSRange.h:
/usr/include/GNUstep/GNUstepBase/NSString+GNUstepBase.h:
/usr/include/GNUstep/GNUstepBase/NSMutableString+GNUstepBase.h:
/usr/include/GNUstep/Foundation/NSAppleEventDescriptor.h:
/usr/include/GNUstep/Foundation/NSAppleEventManager.h:
/usr/include/GNUstep/Foundation/NSAppleScript.h:
/usr/include/GNUstep/Foundation/NSArchiver.h:
/usr/include/GNUstep/Foundation/NSCoder.h:
/usr/include/GNUstep/Foundation/NSSet.h:
/usr/include/GNUstep/Foundation/NSEnumerator.h:
/usr/include/GNUstep/Foundation/NSArray.h:
/usr/include/GNUstep/GNUstepBase/NSArray+GNUstepBase.h:
/usr/include/GNUstep/Foundation/NSAttributedString.h:
/usr/include/GNUstep/Foundation/NSDictionary.h:
/usr/include/GNUstep/GNUstepBase/NSAttributedString+GNUstepBase.h:
/usr/include/GNUstep/Foundation/NSAutoreleasePool.h:
/usr/include/GNUstep/Foundation/NSBackgroundActivityScheduler.h:
/usr/include/GNUstep/Foundation/NSBundle.h:
/usr/include/GNUstep/GNUstepBase/NSBundle+GNUstepBase.h:
/usr/include/GNUstep/Foundation/NSByteOrder.h:
/usr/include/GNUstep/Foundation/NSCache.h:
/usr/include/GNUstep/Foundation/NSCalendar.h:
/usr/include/GNUstep/Foundation/NSCalendarDate.h:
/usr/include/GNUstep/GNUstepBase/NSCalendarDate+GNUstepBase.h:
/usr/include/GNUstep/Foundation/NSCharacterSet.h:
/usr/include/GNUstep/Foundation/NSClassDescription.h:
/usr/include/GNUstep/Foundation/NSException.h:
/usr/include/GNUstep/Foundation/NSComparisonPredicate.h:
/usr/include/GNUstep/Foundation/NSExpression.h:
/usr/include/GNUstep/Foundation/NSPredicate.h:
/usr/include/GNUstep/Foundation/NSCompoundPredicate.h:
/usr/include/GNUstep/Foundation/NSConnection.h:
/usr/include/GNUstep/Foundation/NSTimer.h:
/usr/include/GNUstep/Foundation/NSRunLoop.h:
/usr/include/GNUstep/Foundation/NSMapTable.h:
/usr/include/GNUstep/Foundation/NSPointerFunctions.h:
/usr/include/GNUstep/Foundation/NSData.h:
/usr/include/GNUstep/Foundation/NSSerialization.h:
/usr/include/GNUstep/GNUstepBase/NSData+GNUstepBase.h:
/usr/include/GNUstep/Foundation/NSDateComponentsFormatter.h:
/usr/include/GNUstep/Foundation/NSFormatter.h:
/usr/include/GNUstep/Foundation/NSDateFormatter.h:
/usr/include/GNUstep/Foundation/NSDateInterval.h:
/usr/include/GNUstep/Foundation/NSDateIntervalFormatter.h:
/usr/include/GNUstep/Foundation/NSDecimalNumber.h:
/usr/include/GNUstep/Foundation/NSDecimal.h:
/usr/include/GNUstep/Foundation/NSValue.h:
/usr/include/GNUstep/GNUstepBase/NSNumber+GNUstepBase.h:
/usr/include/GNUstep/Foundation/NSDistantObject.h:
/usr/include/GNUstep/Foundation/NSProxy.h:
/usr/include/GNUstep/Foundation/NSDistributedLock.h:
/usr/include/GNUstep/Foundation/NSDistributedNotificationCenter.h:
/usr/include/GNUstep/Foundation/NSLock.h:
/usr/include/GNUstep/GNUstepBase/NSLock+GNUstepBase.h:
/usr/include/GNUstep/Foundation/NSNotification.h:
/usr/include/GNUstep/Foundation/NSEnergyFormatter.h:
/usr/include/GNUstep/Foundation/NSError.h:
/usr/include/GNUstep/Foundation/NSExtensionContext.h:
/usr/include/GNUstep/Foundation/NSExtensionItem.h:
/usr/include/GNUstep/Foundation/NSExtensionRequestHandling.h:
/usr/include/GNUstep/Foundation/NSFileCoordinator.h:
/usr/include/GNUstep/Foundation/NSURL.h:
/usr/include/GNUstep/Foundation/NSURLHandle.h:
/usr/include/GNUstep/GNUstepBase/NSURL+GNUstepBase.h:
/usr/include/GNUstep/Foundation/NSFileHandle.h:
/usr/include/GNUstep/GNUstepBase/NSFileHandle+GNUstepBase.h:
/usr/include/GNUstep/Foundation/NSFileManager.h:
/usr/include/GNUstep/Foundation/NSPathUtilities.h:
/usr/include/GNUstep/Foundation/NSFilePresenter.h:
/usr/include/GNUstep/Foundation/NSFileVersion.h:
/usr/include/GNUstep/Foundation/NSFileWrapper.h:
/usr/include/GNUstep/Foundation/NSGarbageCollector.h:
/usr/include/GNUstep/Foundation/NSHashTable.h:
/usr/include/GNUstep/Foundation/NSHFSFileTypes.h:
/usr/include/GNUstep/Foundation/NSHost.h:
/usr/include/GNUstep/Foundation/NSHTTPCookie.h:
/usr/include/GNUstep/Foundation/NSHTTPCookieStorage.h:
/usr/include/GNUstep/Foundation/NSIndexPath.h:
/usr/include/GNUstep/Foundation/NSIndexSet.h:
/usr/include/GNUstep/Foundation/NSInvocation.h:
/usr/include/GNUstep/Foundation/NSMethodSignature.h:
/usr/include/GNUstep/Foundation/NSInvocationOperation.h:
/usr/include/GNUstep/Foundation/NSOperation.h:
/usr/include/GNUstep/Foundation/NSISO8601DateFormatter.h:
/usr/include/GNUstep/Foundation/NSItemProvider.h:
/usr/include/GNUstep/Foundation/NSItemProviderReadingWriting.h:
/usr/include/GNUstep/Foundation/NSJSONSerialization.h:
/usr/include/GNUstep/Foundation/NSKeyedArchiver.h:
/usr/include/GNUstep/Foundation/NSPropertyList.h:
/usr/include/GNUstep/Foundation/NSKeyValueCoding.h:
/usr/include/GNUstep/Foundation/NSKeyValueObserving.h:
/usr/include/GNUstep/Foundation/NSLengthFormatter.h:
/usr/include/GNUstep/Foundation/NSLinguisticTagger.h:
/usr/include/GNUstep/Foundation/NSLocale.h:
/usr/include/GNUstep/Foundation/NSMeasurement.h:
/usr/include/GNUstep/Foundation/NSMeasurementFormatter.h:
/usr/include/GNUstep/Foundation/NSMetadata.h:
/usr/include/GNUstep/Foundation/NSMetadataAttributes.h:
/usr/include/GNUstep/Foundation/NSNotificationQueue.h:
/usr/include/GNUstep/Foundation/NSNetServices.h:
/usr/include/GNUstep/GNUstepBase/NSNetServices+GNUstepBase.h:
/usr/include/GNUstep/Foundation/NSNull.h:
/usr/include/GNUstep/Foundation/NSNumberFormatter.h:
/usr/include/GNUstep/Foundation/NSObjectScripting.h:
/usr/include/GNUstep/Foundation/NSOrderedSet.h:
/usr/include/GNUstep/Foundation/NSOrthography.h:
/usr/include/GNUstep/Foundation/NSPersonNameComponents.h:
/usr/include/GNUstep/Foundation/NSPersonNameComponentsFormatter.h:
/usr/include/GNUstep/Foundation/NSPointerArray.h:
/usr/include/GNUstep/Foundation/NSPortCoder.h:
/usr/include/GNUstep/Foundation/NSPortMessage.h:
/usr/include/GNUstep/Foundation/NSPort.h:
/usr/include/GNUstep/Foundation/NSPortNameServer.h:
/usr/include/GNUstep/Foundation/NSProgress.h:
/usr/include/GNUstep/Foundation/NSProtocolChecker.h:
/usr/include/GNUstep/Foundation/NSRegularExpression.h:
/usr/include/GNUstep/Foundation/NSScanner.h:
/usr/include/GNUstep/Foundation/NSScriptClassDescription.h:
/usr/include/GNUstep/Foundation/NSScriptCoercionHandler.h:
/usr/include/GNUstep/Foundation/NSScriptCommand.h:
/usr/include/GNUstep/Foundation/NSScriptCommandDescription.h:
/usr/include/GNUstep/Foundation/NSScriptExecutionContext.h:
/usr/include/GNUstep/Foundation/NSScriptKeyValueCoding.h:
/usr/include/GNUstep/Foundation/NSScriptObjectSpecifiers.h:
/usr/include/GNUstep/Foundation/NSScriptStandardSuiteCommands.h:
/usr/include/GNUstep/Foundation/NSScriptSuiteRegistry.h:
/usr/include/GNUstep/Foundation/NSScriptWhoseTests.h:
/usr/include/GNUstep/Foundation/NSSortDescriptor.h:
/usr/include/GNUstep/Foundation/NSSpellServer.h:
/usr/include/GNUstep/Foundation/NSStream.h:
/usr/include/GNUstep/GNUstepBase/NSStream+GNUstepBase.h:
/usr/include/GNUstep/Foundation/NSTask.h:
/usr/include/GNUstep/GNUstepBase/NSTask+GNUstepBase.h:
/usr/include/GNUstep/Foundation/NSTextCheckingResult.h:
/usr/include/GNUstep/Foundation/NSThread.h:
/usr/include/GNUstep/GNUstepBase/NSThread+GNUstepBase.h:
/usr/include/GNUstep/Foundation/NSTimeZone.h:
/usr/include/GNUstep/Foundation/NSUbiquitousKeyValueStore.h:
/usr/include/GNUstep/Foundation/NSUndoManager.h:
/usr/include/GNUstep/Foundation/NSUnit.h:
/usr/include/GNUstep/Foundation/NSUserActivity.h:
/usr/include/GNUstep/Foundation/NSURLAuthenticationChallenge.h:
/usr/include/GNUstep/Foundation/NSURLCache.h:
/usr/include/GNUstep/Foundation/NSURLConnection.h:
/usr/include/GNUstep/Foundation/NSURLCredential.h:
/usr/include/GNUstep/Foundation/NSURLCredentialStorage.h:
/usr/include/GNUstep/Foundation/NSURLDownload.h:
/usr/include/GNUstep/Foundation/NSURLError.h:
/usr/include/GNUstep/Foundation/NSURLProtectionSpace.h:
/usr/include/GNUstep/Foundation/NSURLProtocol.h:
/usr/include/GNUstep/Foundation/NSURLRequest.h:
/usr/include/GNUstep/Foundation/NSURLResponse.h:
/usr/include/GNUstep/Foundation/NSURLSession.h:
/usr/include/GNUstep/Foundation/NSUserDefaults.h:
/usr/include/GNUstep/Foundation/NSUserNotification.h:
/usr/include/GNUstep/Foundation/NSUUID.h:
/usr/include/GNUstep/Foundation/NSValueTransformer.h:
/usr/include/GNUstep/Foundation/NSXMLDocument.h:
/usr/include/GNUstep/Foundation/NSXMLNode.h:
/usr/include/GNUstep/Foundation/NSXMLNodeOptions.h:
/usr/include/GNUstep/Foundation/NSXMLDTD.h:
/usr/include/GNUstep/Foundation/NSXMLDTDNode.h:
/usr/include/GNUstep/Foundation/NSXMLElement.h:
/usr/include/GNUstep/Foundation/NSXMLParser.h:
/usr/include/GNUstep/Foundation/NSXPCConnection.h:
/usr/include/GNUstep/AppKit/AppKitErrors.h:
/usr/include/GNUstep/AppKit/NSGraphics.h:
/usr/include/GNUstep/AppKit/NSGraphicsContext.h:
/usr/include/GNUstep/AppKit/AppKitDefines.h:
/usr/include/GNUstep/GNUstepGUI/GSMethodTable.h:
/usr/include/GNUstep/AppKit/NSFont.h:
/usr/include/GNUstep/AppKit/NSColor.h:
/usr/include/GNUstep/AppKit/NSAccessibility.h:
/usr/include/GNUstep/AppKit/NSAccessibilityConstants.h:
/usr/include/GNUstep/AppKit/NSAccessibilityCustomAction.h:
/usr/include/GNUstep/AppKit/NSAccessibilityCustomRotor.h:
/usr/include/GNUstep/AppKit/NSAccessibilityProtocols.h:
/usr/include/GNUstep/AppKit/NSAccessibilityElement.h:
/usr/include/GNUstep/AppKit/NSActionCell.h:
/usr/include/GNUstep/AppKit/NSCell.h:
/usr/include/GNUstep/AppKit/NSParagraphStyle.h:
/usr/include/GNUstep/AppKit/NSText.h:
/usr/include/GNUstep/AppKit/NSView.h:
/usr/include/GNUstep/AppKit/NSResponder.h:
/usr/include/GNUstep/AppKit/NSInterfaceStyle.h:
/usr/include/GNUstep/AppKit/NSUserInterfaceLayout.h:
/usr/include/GNUstep/AppKit/NSSpellProtocol.h:
/usr/include/GNUstep/AppKit/NSAnimationContext.h:
/usr/include/GNUstep/AppKit/NSAppearance.h:
/usr/include/GNUstep/AppKit/NSApplication.h:
/usr/include/GNUstep/AppKit/NSUserInterfaceValidation.h:
/usr/include/GNUstep/AppKit/NSAttributedString.h:
/usr/include/GNUstep/AppKit/NSFontManager.h:
/usr/include/GNUstep/AppKit/NSBitmapImageRep.h:
/usr/include/GNUstep/AppKit/NSImageRep.h:
/usr/include/GNUstep/AppKit/NSBox.h:
/usr/include/GNUstep/AppKit/NSBrowser.h:
/usr/include/GNUstep/AppKit/NSControl.h:
/usr/include/GNUstep/AppKit/NSBrowserCell.h:
/usr/include/GNUstep/AppKit/NSButton.h:
/usr/include/GNUstep/AppKit/NSButtonCell.h:
/usr/include/GNUstep/AppKit/NSCachedImageRep.h:
/usr/include/GNUstep/AppKit/NSCIImageRep.h:
/usr/include/GNUstep/AppKit/NSClipView.h:
/usr/include/GNUstep/AppKit/NSCollectionView.h:
/usr/include/GNUstep/AppKit/NSDragging.h:
/usr/include/GNUstep/AppKit/NSNibDeclarations.h:
/usr/include/GNUstep/AppKit/NSCollectionViewItem.h:
/usr/include/GNUstep/AppKit/NSImageView.h:
/usr/include/GNUstep/AppKit/NSImageCell.h:
/usr/include/GNUstep/AppKit/NSTextField.h:
/usr/include/GNUstep/AppKit/NSTextFieldCell.h:
/usr/include/GNUstep/AppKit/NSViewController.h:
/usr/include/GNUstep/AppKit/NSSeguePerforming.h:
/usr/include/GNUstep/AppKit/NSStoryboardSegue.h:
/usr/include/GNUstep/AppKit/NSPopover.h:
/usr/include/GNUstep/AppKit/NSColorList.h:
/usr/include/GNUstep/AppKit/NSColorPanel.h:
/usr/include/GNUstep/AppKit/NSColorPicking.h:
/usr/include/GNUstep/AppKit/NSColorWell.h:
/usr/include/GNUstep/AppKit/NSPanel.h:
/usr/include/GNUstep/AppKit/NSWindow.h:
/usr/include/GNUstep/AppKit/NSColorPicker.h:
/usr/include/GNUstep/AppKit/NSCursor.h:
/usr/include/GNUstep/AppKit/NSCustomImageRep.h:
/usr/include/GNUstep/AppKit/NSDataAsset.h:
/usr/include/GNUstep/AppKit/NSDataLink.h:
/usr/include/GNUstep/AppKit/NSDataLinkManager.h:
/usr/include/GNUstep/AppKit/NSDataLinkPanel.h:
/usr/include/GNUstep/AppKit/NSEPSImageRep.h:
/usr/include/GNUstep/AppKit/NSEvent.h:
/usr/include/GNUstep/AppKit/NSFontPanel.h:
/usr/include/GNUstep/AppKit/NSForm.h:
/usr/include/GNUstep/AppKit/NSMatrix.h:
/usr/include/GNUstep/AppKit/NSFormCell.h:
/usr/include/GNUstep/AppKit/NSHelpPanel.h:
/usr/include/GNUstep/AppKit/NSImage.h:
/usr/include/GNUstep/AppKit/NSMenu.h:
/usr/include/GNUstep/AppKit/NSMenuItem.h:
/usr/include/GNUstep/AppKit/NSMenuItemCell.h:
/usr/include/GNUstep/AppKit/NSMenuView.h:
/usr/include/GNUstep/AppKit/NSNibLoading.h:
/usr/include/GNUstep/AppKit/NSOpenPanel.h:
/usr/include/GNUstep/AppKit/NSSavePanel.h:
/usr/include/GNUstep/AppKit/NSPageLayout.h:
/usr/include/GNUstep/AppKit/NSPasteboard.h:
/usr/include/GNUstep/AppKit/NSPasteboardItem.h:
/usr/include/GNUstep/AppKit/NSPDFInfo.h:
/usr/include/GNUstep/AppKit/NSPrintInfo.h:
/usr/include/GNUstep/AppKit/NSPDFImageRep.h:
/usr/include/GNUstep/AppKit/NSPDFPanel.h:
/usr/include/GNUstep/AppKit/NSPICTImageRep.h:
/usr/include/GNUstep/AppKit/NSPopUpButton.h:
/usr/include/GNUstep/AppKit/NSPopUpButtonCell.h:
/usr/include/GNUstep/AppKit/NSPrinter.h:
/usr/include/GNUstep/AppKit/NSPrintOperation.h:
/usr/include/GNUstep/AppKit/NSPrintPanel.h:
/usr/include/GNUstep/AppKit/NSRunningApplication.h:
/usr/include/GNUstep/AppKit/NSWorkspace.h:
/usr/include/GNUstep/AppKit/NSScreen.h:
/usr/include/GNUstep/AppKit/NSScroller.h:
/usr/include/GNUstep/AppKit/NSScrollView.h:
/usr/include/GNUstep/AppKit/NSScrubber.h:
/usr/include/GNUstep/AppKit/NSScrubberItemView.h:
/usr/include/GNUstep/AppKit/NSScrubberLayout.h:
/usr/include/GNUstep/AppKit/NSSelection.h:
/usr/include/GNUstep/AppKit/NSSharingService.h:
/usr/include/GNUstep/AppKit/NSSlider.h:
/usr/include/GNUstep/AppKit/NSSliderCell.h:
/usr/include/GNUstep/AppKit/NSSpellChecker.h:
/usr/include/GNUstep/AppKit/NSSplitView.h:
/usr/include/GNUstep/AppKit/NSStatusBar.h:
/usr/include/GNUstep/AppKit/NSStatusBarButton.h:
/usr/include/GNUstep/AppKit/NSStatusItem.h:
/usr/include/GNUstep/AppKit/NSStringDrawing.h:
/usr/include/GNUstep/AppKit/NSAlert.h:
/usr/include/GNUstep/AppKit/NSAnimation.h:
/usr/include/GNUstep/GNUstepGUI/GSAnimator.h:
/usr/include/GNUstep/AppKit/NSAffineTransform.h:
/usr/include/GNUstep/AppKit/NSArrayController.h:
/usr/include/GNUstep/AppKit/NSObjectController.h:
/usr/include/GNUstep/AppKit/NSController.h:
/usr/include/GNUstep/AppKit/NSBezierPath.h:
/usr/include/GNUstep/AppKit/NSButtonTouchBarItem.h:
/usr/include/GNUstep/AppKit/NSTouchBarItem.h:
/usr/include/GNUstep/AppKit/NSColorSampler.h:
/usr/include/GNUstep/AppKit/NSColorSpace.h:
/usr/include/GNUstep/AppKit/NSComboBox.h:
/usr/include/GNUstep/AppKit/NSComboBoxCell.h:
/usr/include/GNUstep/AppKit/NSCandidateListTouchBarItem.h:
/usr/include/GNUstep/AppKit/NSClickGestureRecognizer.h:
/usr/include/GNUstep/AppKit/NSGestureRecognizer.h:
/usr/include/GNUstep/AppKit/NSColorPickerTouchBarItem.h:
/usr/include/GNUstep/AppKit/NSCustomTouchBarItem.h:
/usr/include/GNUstep/AppKit/NSDatePicker.h:
/usr/include/GNUstep/AppKit/NSDatePickerCell.h:
/usr/include/GNUstep/AppKit/NSDockTile.h:
/usr/include/GNUstep/AppKit/NSDocument.h:
/usr/include/GNUstep/AppKit/NSDocumentController.h:
/usr/include/GNUstep/AppKit/NSDrawer.h:
/usr/include/GNUstep/AppKit/NSFileWrapperExtensions.h:
/usr/include/GNUstep/AppKit/NSFontAssetRequest.h:
/usr/include/GNUstep/AppKit/NSFontCollection.h:
/usr/include/GNUstep/AppKit/NSFontDescriptor.h:
/usr/include/GNUstep/AppKit/NSGlyphGenerator.h:
/usr/include/GNUstep/AppKit/NSGradient.h:
/usr/include/GNUstep/AppKit/NSGridView.h:
/usr/include/GNUstep/AppKit/NSGroupTouchBarItem.h:
/usr/include/GNUstep/AppKit/NSHelpManager.h:
/usr/include/GNUstep/AppKit/NSInputManager.h:
/usr/include/GNUstep/AppKit/NSInputServer.h:
/usr/include/GNUstep/AppKit/NSKeyValueBinding.h:
/usr/include/GNUstep/AppKit/NSLayoutAnchor.h:
/usr/include/GNUstep/AppKit/NSLayoutConstraint.h:
/usr/include/GNUstep/AppKit/NSLayoutGuide.h:
/usr/include/GNUstep/AppKit/NSUserInterfaceItemIdentification.h:
/usr/include/GNUstep/AppKit/NSLayoutManager.h:
/usr/include/GNUstep/GNUstepGUI/GSLayoutManager.h:
/usr/include/GNUstep/AppKit/NSTextView.h:
/usr/include/GNUstep/AppKit/NSTextFinder.h:
/usr/include/GNUstep/AppKit/NSTextAttachment.h:
/usr/include/GNUstep/AppKit/NSLevelIndicator.h:
/usr/include/GNUstep/AppKit/NSLevelIndicatorCell.h:
/usr/include/GNUstep/AppKit/NSMagnificationGestureRecognizer.h:
/usr/include/GNUstep/AppKit/NSMediaLibraryBrowserController.h:
/usr/include/GNUstep/AppKit/NSMovie.h:
/usr/include/GNUstep/AppKit/NSMovieView.h:
/usr/include/GNUstep/AppKit/NSPageController.h:
/usr/include/GNUstep/AppKit/NSPanGestureRecognizer.h:
/usr/include/GNUstep/AppKit/NSNib.h:
/usr/include/GNUstep/AppKit/NSNibControlConnector.h:
/usr/include/GNUstep/AppKit/NSNibConnector.h:
/usr/include/GNUstep/AppKit/NSNibOutletConnector.h:
/usr/include/GNUstep/AppKit/NSOpenGL.h:
/usr/include/GNUstep/AppKit/NSOpenGLView.h:
/usr/include/GNUstep/AppKit/NSOutlineView.h:
/usr/include/GNUstep/AppKit/NSTableView.h:
/usr/include/GNUstep/AppKit/NSPersistentDocument.h:
/usr/include/GNUstep/AppKit/NSPathControl.h:
/usr/include/GNUstep/AppKit/NSPathCell.h:
/usr/include/GNUstep/AppKit/NSPathComponentCell.h:
/usr/include/GNUstep/AppKit/NSPathControlItem.h:
/usr/include/GNUstep/AppKit/NSPickerTouchBarItem.h:
/usr/include/GNUstep/AppKit/NSPredicateEditor.h:
/usr/include/GNUstep/AppKit/NSRuleEditor.h:
/usr/include/GNUstep/AppKit/NSPredicateEditorRowTemplate.h:
/usr/include/GNUstep/AppKit/NSProgressIndicator.h:
/usr/include/GNUstep/AppKit/NSPopoverTouchBarItem.h:
/usr/include/GNUstep/AppKit/NSPressGestureRecognizer.h:
/usr/include/GNUstep/AppKit/NSRulerMarker.h:
/usr/include/GNUstep/AppKit/NSRulerView.h:
/usr/include/GNUstep/AppKit/NSRotationGestureRecognizer.h:
/usr/include/GNUstep/AppKit/NSSearchField.h:
/usr/include/GNUstep/AppKit/NSSearchFieldCell.h:
/usr/include/GNUstep/AppKit/NSSecureTextField.h:
/usr/include/GNUstep/AppKit/NSSegmentedCell.h:
/usr/include/GNUstep/AppKit/NSSegmentedControl.h:
/usr/include/GNUstep/AppKit/NSShadow.h:
/usr/include/GNUstep/AppKit/NSSharingServicePickerToolbarItem.h:
/usr/include/GNUstep/AppKit/NSToolbarItem.h:
/usr/include/GNUstep/AppKit/NSSharingServicePickerTouchBarItem.h:
/usr/include/GNUstep/AppKit/NSSliderTouchBarItem.h:
/usr/include/GNUstep/AppKit/NSSound.h:
/usr/include/GNUstep/GNUstepGUI/GSSoundSource.h:
/usr/include/GNUstep/GNUstepGUI/GSSoundSink.h:
/usr/include/GNUstep/AppKit/NSSpeechRecognizer.h:
/usr/include/GNUstep/AppKit/NSSpeechSynthesizer.h:
/usr/include/GNUstep/AppKit/NSStepperTouchBarItem.h:
/usr/include/GNUstep/AppKit/NSStepper.h:
/usr/include/GNUstep/AppKit/NSStepperCell.h:
/usr/include/GNUstep/AppKit/NSStoryboard.h:
/usr/include/GNUstep/AppKit/NSSwitch.h:
/usr/include/GNUstep/AppKit/NSSplitViewController.h:
/usr/include/GNUstep/AppKit/NSSplitViewItem.h:
/usr/include/GNUstep/AppKit/NSTableColumn.h:
/usr/include/GNUstep/AppKit/NSTableHeaderCell.h:
/usr/include/GNUstep/AppKit/NSTableHeaderView.h:
/usr/include/GNUstep/AppKit/NSTabView.h:
/usr/include/GNUstep/AppKit/NSTabViewController.h:
/usr/include/GNUstep/AppKit/NSToolbar.h:
/usr/include/GNUstep/AppKit/NSTabViewItem.h:
/usr/include/GNUstep/AppKit/NSTextAlternatives.h:
/usr/include/GNUstep/AppKit/NSTextContainer.h:
/usr/include/GNUstep/AppKit/NSTextCheckingClient.h:
/usr/include/GNUstep/AppKit/NSTextInputClient.h:
/usr/include/GNUstep/AppKit/NSTextCheckingController.h:
/usr/include/GNUstep/AppKit/NSTextInputContext.h:
/usr/include/GNUstep/AppKit/NSTextList.h:
/usr/include/GNUstep/AppKit/NSTextStorage.h:
/usr/include/GNUstep/AppKit/NSTextTable.h:
/usr/include/GNUstep/AppKit/NSTouch.h:
/usr/include/GNUstep/AppKit/NSTouchBar.h:
/usr/include/GNUstep/AppKit/NSTokenField.h:
/usr/include/GNUstep/AppKit/NSTokenFieldCell.h:
/usr/include/GNUstep/AppKit/NSToolbarItemGroup.h:
/usr/include/GNUstep/AppKit/NSTrackingArea.h:
/usr/include/GNUstep/AppKit/NSTreeController.h:
/usr/include/GNUstep/AppKit/NSTreeNode.h:
/usr/include/GNUstep/AppKit/NSUserDefaultsController.h:
/usr/include/GNUstep/AppKit/NSUserInterfaceCompression.h:
/usr/include/GNUstep/AppKit/NSUserInterfaceItemSearching.h:
/usr/include/GNUstep/AppKit/NSVisualEffectView.h:
/usr/include/GNUstep/AppKit/NSWindowController.h:
/usr/include/GNUstep/AppKit/PSOperators.h:
/usr/include/GNUstep/AppKit/DPSOperators.h:
