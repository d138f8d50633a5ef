#include "config/launcher_config_parser.h"

namespace config {

void LauncherConfigParser::feed(const char16_t* units, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const char16_t unit = units[i];
        if (unit == u'\n') {
            end_line();
        } else if (unit == u'=' && state_ == State::kKey) {
            key_ = take_collected();
            state_ = State::kValue;
        } else {
            collect(unit);
        }
    }
}

void LauncherConfigParser::finish() { end_line(); }

void LauncherConfigParser::collect(char16_t unit) {
    if (workUsed_ == work_.size()) {
        collected_.append(work_.data(), workUsed_);
        workUsed_ = 0;
    }
    work_[workUsed_++] = unit;
}

stdx::u16string LauncherConfigParser::take_collected() {
    stdx::u16string text;
    text.swap(collected_);
    text.append(work_.data(), workUsed_);
    workUsed_ = 0;
    return text;
}

void LauncherConfigParser::end_line() {
    stdx::u16string value;
    if (state_ == State::kKey)
        key_ = take_collected();
    else
        value = take_collected();
    // A line with neither key nor value is an empty line.
    if (!key_.empty() || !value.empty()) store_.insert(key_, value);
    key_.clear();
    state_ = State::kKey;
}

}  // namespace config
