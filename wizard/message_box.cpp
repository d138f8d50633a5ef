#include "wizard/message_box.h"

MessageBoxLook LookOf(std::uint32_t type) {
    const std::uint32_t kind = type >> 24;
    const bool yesNo = (type & 0xFF) == 2;
    if (kind == 0x02) return {MessageIcon::kQuestion, MessageStyle::kWarning, yesNo};
    if (kind == 0x01) return {MessageIcon::kError, MessageStyle::kCritical, yesNo};
    return {MessageIcon::kNone, MessageStyle::kInformational, yesNo};
}

std::uint32_t AnswerOf(std::uint32_t type, int button) {
    const bool yesNo = LookOf(type).yesNo;
    if (button == 0) return yesNo ? kAnswerYes : kAnswerOk;
    if (button == 1 && yesNo) return kAnswerNo;
    return kAnswerNone;
}
