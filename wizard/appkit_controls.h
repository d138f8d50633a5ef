// wizard: how the window's standard controls are made (the navigation buttons, the
// check box and read-only text) and how text reaches them. Shared by the window and by the test
// that measures every text in these controls, so the two cannot drift apart. Objective-C++; main
// thread only.
#pragma once

#include <cstring>

#include "text/string.h"
#include "text/utf8.h"
#include "wizard/platform_compat.h"
#include "wizard/window_layout.h"

// UTF-16 text as an autoreleased NSString, and back; UTF-8 between them whatever the
// locale, as AppKit's strings are.
inline NSString* ToNSString(const stdx::u16string& text) {
    const stdx::mbstring utf8 = stdx::encode_utf8(text.data(), text.size());
    return [NSString stringWithUTF8String:utf8.c_str()];
}

inline stdx::u16string FromNSString(NSString* text) {
    stdx::u16string out;
    const char* utf8 = [text UTF8String];
    if (utf8 != nullptr) stdx::decode_utf8(utf8, std::strlen(utf8), out);
    return out;
}

inline NSRect ToRect(const Frame& frame) {
    return NSMakeRect(frame.x, frame.y, frame.width, frame.height);
}

inline void StyleWizardButton(NSButton* button) {
    [button setButtonType:NSButtonTypeMomentaryLight];
    [button setBezelStyle:NSBezelStyleRounded];
}

inline void StyleCheckBox(NSButton* box) { [box setButtonType:NSButtonTypeSwitch]; }

// Read-only text on the white window.
inline NSTextField* MakeLabel(const Frame& frame, bool wraps) {
    NSTextField* field = [[[NSTextField alloc] initWithFrame:ToRect(frame)] autorelease];
    [field setEditable:NO];
    [field setBordered:NO];
    [field setBezeled:NO];
    [field setDrawsBackground:NO];
    [[field cell] setWraps:wraps];
    return field;
}
