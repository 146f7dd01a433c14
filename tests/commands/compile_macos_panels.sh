#!/bin/sh
# Compiles the macOS file panels against GNUstep, which has the same classes. Status 77: no GNUstep,
# or no compiler for Objective-C++. Arguments: the source folder.
command -v gnustep-config >/dev/null || exit 77
flags=$(gnustep-config --objc-flags) || exit 77
echo 'int main() { return 0; }' | g++ -x objective-c++ -fsyntax-only - 2>/dev/null || exit 77
echo '#import <AppKit/AppKit.h>' |
    g++ $flags -w -x objective-c++ -fsyntax-only - 2>/dev/null || exit 77
exec g++ -std=c++20 -I"$1" $flags -Wno-subobject-linkage -Werror -x objective-c++ -fsyntax-only \
    "$1/commands/GetFilenameDialog.mm"
