// Found before the real Cocoa by every target but the window's: the portable modules
// build without a window system, and this keeps them so.
#error "AppKit belongs to app/ and wizard/ only (here through Cocoa): keep this portable"
