// Found before the real AppKit by every target but the window's: the portable modules
// (text, fs, kit, install, config, app's catalogue, tools, tests) build without a window
// system, and this keeps them so.
#error "AppKit (through Cocoa) belongs to app/ and wizard/'s window layer only; this module must stay portable"
