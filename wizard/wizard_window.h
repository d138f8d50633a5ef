// wizard: WizardWindow is all the controller (wizard/installer_dialog.h) asks of a window.
// The AppKit layer implements it with real views; tests implement it with a recorder,
// so every decision about pages, buttons and texts is made in portable C++ and the
// Objective-C++ only makes, shows and hides views.
//
// Threads: main thread only, like the views behind it.
#pragma once

#include <cstdint>

#include "text/string.h"

enum class WizardPage { kWelcome, kDirectory, kProgress, kSuccess, kError };

// How the three navigation buttons look on a page.
struct ButtonStates {
    bool backVisible = true;
    bool backEnabled = true;
    bool nextVisible = true;
    bool nextEnabled = true;
    bool cancelEnabled = true;
    bool nextIsFinish = false;  // Next carries the finish title
};

// What one round of the progress loop saw.
enum class LoopEvent {
    kNone,          // no event within the wait
    kOther,         // an event elsewhere, dispatched
    kInsideCancel,  // an event located inside the Cancel button, dispatched
};

class WizardWindow {
  public:
    virtual ~WizardWindow() = default;

    // Makes `page` the one visible page. `text` is the message of the welcome and error
    // pages and the path shown on the directory page; other pages ignore it.
    virtual void ShowPage(WizardPage page, const stdx::u16string& text) = 0;
    virtual void SetButtons(const ButtonStates& buttons) = 0;
    // The path field of the directory page as typed.
    virtual stdx::u16string TypedPath() = 0;
    // The progress page's status line and bar (0 to 100).
    virtual void SetProgress(const stdx::u16string& status, std::int32_t percent) = 0;
    // The success page's "open description" check box.
    virtual bool OpenDescriptionChecked() = 0;
    // A modal message box (see wizard/message_box.h for types and results).
    virtual std::uint32_t ShowMessageBox(const stdx::u16string& text, std::uint32_t type) = 0;
    // Waits up to `milliseconds` for one event, dispatches it, and says where it was.
    virtual LoopEvent PumpEvent(std::int32_t milliseconds) = 0;
    // Closes the window; the application ends once it is closed.
    virtual void Close() = 0;
};
