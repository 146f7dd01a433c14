#!/bin/sh
# Compiles the macOS file panels against GNUstep, which has the same classes. Status 77: no GNUstep,
# or no compiler for Objective-C++. Argument: the source folder.
command -v gnustep-config >/dev/null || exit 77
flags="$(gnustep-config --objc-flags) -MF /dev/null -fsyntax-only -x objective-c++" || exit 77
echo '#import <AppKit/AppKit.h>' | g++ $flags -w - 2>/dev/null || exit 77
# GNUstep's own headers draw the one warning that is off.
exec g++ -std=c++20 -I"$1" $flags -Wno-subobject-linkage -Werror "$1/commands/GetFilenameDialog.mm"
