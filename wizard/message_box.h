// wizard: the meaning of a message-box type word and of the button pressed, kept apart
// from the alert that shows them so both can be checked without a window.
//
// Threads: any; pure functions.
#pragma once

#include <cstdint>

// Types in use: information with OK, error with OK, question with Yes and No.
constexpr std::uint32_t kMessageInformation = 0x0000001;
constexpr std::uint32_t kMessageError = 0x1000001;
constexpr std::uint32_t kMessageQuestion = 0x2000002;

// Results.
constexpr std::uint32_t kAnswerNone = 0;
constexpr std::uint32_t kAnswerYes = 1;
constexpr std::uint32_t kAnswerNo = 2;
constexpr std::uint32_t kAnswerOk = 3;

enum class MessageIcon { kNone, kError, kQuestion };
// The alert styles' own numbers: warning 0, informational 1, critical 2.
enum class MessageStyle : std::uint32_t { kWarning = 0, kInformational = 1, kCritical = 2 };

struct MessageBoxLook {
    MessageIcon icon;
    MessageStyle style;
    bool yesNo;  // buttons "Yes" and "No" (Return and Escape); else one "OK" (Return)
};

// Low byte 2: Yes and No. High byte 0x02: question icon, warning style; 0x01: error
// icon, critical style; anything else: no icon, informational style.
MessageBoxLook LookOf(std::uint32_t type);

// `button` is the index of the button pressed (0 first), or -1 when the box ended
// another way.
std::uint32_t AnswerOf(std::uint32_t type, int button);
