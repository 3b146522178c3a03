// SPDX-License-Identifier: Apache-2.0
// localtime_r takes 330 ns, several times what the rest of a formatted date needs,
// so the answers are kept: one for each stretch of three days at whose both ends the
// zone is the same. No zone of the tz database changes its clocks twice within four
// days (the shortest time is 3.99), so in between it is the same, too. A stretch
// with a change in it is asked for each time.
#include "tools/platform/host.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <ctime>
#include <mutex>
#include <string_view>

namespace kaz::host {

namespace {

constexpr int longestOffset = 23 * 3600 + 59 * 60;

std::tm localTime(std::int64_t seconds) {
    const auto moment = static_cast<std::time_t>(seconds);
    std::tm result{};
    if (::localtime_r(&moment, &result) == nullptr)
        result = {};
    result.tm_gmtoff = std::clamp<long>(result.tm_gmtoff, -longestOffset, longestOffset);
    return result;
}

std::string_view nameOf(const std::tm& time) {
    return time.tm_zone != nullptr ? time.tm_zone : "";
}

bool isSameZone(const std::tm& a, const std::tm& b) {
    return a.tm_gmtoff == b.tm_gmtoff && nameOf(a) == nameOf(b);
}

/// Which zone the C library reads: kept answers are of that one.
class Setting {
public:
    /// Brings it up to date. True when it has changed.
    bool update() {
        const char* variable = environment("TZ");
        if (isNow(variable))
            return false;
        // localtime_r, unlike localtime, need not read the variable again.
        ::tzset();
        isSet_ = variable != nullptr;
        const std::string_view text = isSet_ ? variable : "";
        isKnown_ = text.size() < text_.size();
        if (isKnown_)
            text_[text.copy(text_.data(), text.size())] = '\0';
        return true;
    }

private:
    bool isNow(const char* variable) const {
        return isKnown_ && isSet_ == (variable != nullptr) &&
               (!isSet_ || std::strcmp(variable, text_.data()) == 0);
    }

    std::array<char, 64> text_{};
    bool isKnown_ = false; ///< whether all of "TZ" is in text_
    bool isSet_ = false;
};

class Answers {
public:
    void find(std::int64_t seconds, int& offset, std::string& name) {
        if (setting_.update())
            entries_.fill({});
        const std::int64_t stretch = seconds >> stretchBits;
        if (stretch != static_cast<std::int32_t>(stretch) || stretch == none)
            return ask(seconds, offset, name);
        Entry& entry = entries_[static_cast<std::size_t>(stretch) % entries_.size()];
        if (entry.stretch != stretch && !load(entry, stretch))
            return ask(seconds, offset, name);
        offset = entry.offset;
        name = entry.name.data();
    }

    static void ask(std::int64_t seconds, int& offset, std::string& name) {
        const std::tm time = localTime(seconds);
        offset = static_cast<int>(time.tm_gmtoff);
        name = nameOf(time);
    }

private:
    static constexpr int stretchBits = 18; // 262144 s
    static constexpr std::int32_t none = INT32_MAX;

    struct Entry {
        std::int32_t stretch = none;
        std::int32_t offset = 0;
        std::array<char, 8> name{};
    };

    static bool load(Entry& entry, std::int64_t stretch) {
        const std::tm first = localTime(stretch * (1 << stretchBits));
        const std::tm last = localTime((stretch + 1) * (1 << stretchBits) - 1);
        const std::string_view name = nameOf(first);
        if (!isSameZone(first, last) || name.size() >= entry.name.size())
            return false;
        entry.stretch = static_cast<std::int32_t>(stretch);
        entry.offset = static_cast<std::int32_t>(first.tm_gmtoff);
        entry.name[name.copy(entry.name.data(), name.size())] = '\0';
        return true;
    }

    Setting setting_;
    std::array<Entry, 256> entries_{}; // two years of neighbours
};

constinit Answers answers;
constinit std::mutex answersMutex;

} // namespace

std::int64_t now(int& nanosecond) {
    std::timespec time{};
    ::clock_gettime(CLOCK_REALTIME, &time);
    nanosecond = static_cast<int>(time.tv_nsec);
    return time.tv_sec;
}

/// Waits for no other thread, but asks the C library without the kept answers. So a process that
/// was forked while another thread held the mutex does not hang.
void localZone(std::int64_t seconds, int& offset, std::string& name) {
    const std::unique_lock lock(answersMutex, std::try_to_lock);
    if (lock.owns_lock())
        answers.find(seconds, offset, name);
    else
        Answers::ask(seconds, offset, name);
}

} // namespace kaz::host
