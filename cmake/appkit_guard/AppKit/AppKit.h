// Found before the real AppKit by every target but the window's: the portable modules
// (text, fs, kit, install, config, app's catalogue, tools, tests) build without a window
// system, and this keeps them so.
#error "AppKit belongs to app/ and wizard/ only: keep this module portable"
