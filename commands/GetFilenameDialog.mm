// The file panels of macOS.
#include "commands/GetFilenameDialog.h"

#import <AppKit/AppKit.h>

#include "frac/frac_extension.h"

namespace {

// The path of `url` into path; false, with path as it was, when there is none.
bool takePath(NSURL* url, std::string& path) {
    NSString* chosen = [url path];
    if (chosen == nil) return false;
    const char* text = [chosen UTF8String];
    if (text == nullptr || *text == '\0') return false;
    path = text;
    applyFracExtension(path);
    return true;
}

}  // namespace

// A cancelled panel is told by its empty choice, not by its result.
bool GetOpenFilename(std::string& path, std::string message) {
    NSOpenPanel* panel = [NSOpenPanel openPanel];
    [panel setAllowsMultipleSelection:NO];
    [panel setResolvesAliases:YES];
    [panel setTreatsFilePackagesAsDirectories:YES];
    [panel setMessage:[NSString stringWithUTF8String:message.c_str()]];
    [panel runModal];
    NSArray* urls = [panel URLs];
    if (urls == nil || [urls count] == 0) return false;
    return takePath([urls objectAtIndex:0], path);
}

bool GetSaveFilename(std::string& path, std::string message) {
    NSSavePanel* panel = [NSSavePanel savePanel];
    [panel setMessage:[NSString stringWithUTF8String:message.c_str()]];
    [panel setCanCreateDirectories:YES];
    [panel setNameFieldLabel:[NSString stringWithUTF8String:path.c_str()]];
    [panel runModal];
    return takePath([panel URL], path);
}
