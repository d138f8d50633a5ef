// kit: the seam through which preparation reports a failure to the user. The window
// layer implements it with a message box; tests record what would have been shown.
// Implementations must not call back into preparation.
//
// Threads: called on the thread that runs preparation (the main thread).
#pragma once

#include <cstdint>
#include <string>

#include "text/string.h"

class MessageSink {
  public:
    virtual ~MessageSink() = default;

    // Shows `text`, the current language's text of catalogue `key`, in a message box of
    // `style` (0x1000001: error icon, one OK button) and returns once it is dismissed.
    virtual void ShowError(const std::string& key, const stdx::u16string& text,
                           std::uint32_t style) = 0;
};
