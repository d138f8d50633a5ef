// A portable module that reaches for AppKit: with the guard folder first on the include
// path it must not compile; without it, it does (so the guard, not a missing header, is
// what stops it).
#include <AppKit/AppKit.h>

#include "kit/preparation.h"

int main() { return [NSApplication class] != nil ? 0 : 1; }
