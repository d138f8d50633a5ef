// wizard: how the window's standard controls are made: the navigation buttons, the
// check box and read-only text. Shared by the window and by the test that measures
// every text in these controls, so the two cannot drift apart. Objective-C++; main
// thread only.
#pragma once

#include "wizard/platform_compat.h"
#include "wizard/window_layout.h"

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
