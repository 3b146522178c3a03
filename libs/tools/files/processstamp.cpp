// SPDX-License-Identifier: Apache-2.0
// A stamp is three words: where the number counts, the number, and when that process was started.
// Numbers are used again, so a number alone tells nothing. What cannot be known, a stamp of
// another place or one that is no stamp, is told apart from what is known not to run.
#include "tools/files/processstamp.h"

#include "tools/files/detail/text.h"
#include "tools/platform/host.h"

#include <charconv>
#include <string>
#include <string_view>

namespace host = kaz::host;

namespace {

std::string_view takeWord(std::string_view& text) {
    const std::string_view word = text.substr(0, text.find(' '));
    text.remove_prefix(word.size() < text.size() ? word.size() + 1 : text.size());
    return word;
}

} // namespace

KazString kazProcessStamp() {
    const std::string place = host::processPlace();
    const std::string start = host::processStart(host::processId());
    if (place.empty() || start.empty())
        return KazString();
    return kaz::detail::toText(place + ' ' + std::to_string(host::processId()) + ' ' + start);
}

int kazIsRunning(const char* stamp) {
    std::string_view rest = kaz::detail::orEmpty(stamp);
    const std::string_view place = takeWord(rest);
    const std::string_view digits = takeWord(rest);
    const std::string_view start = takeWord(rest);
    int number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (error != std::errc() || end != digits.data() + digits.size() || number <= 0 ||
        start.empty() || place.empty() || place != host::processPlace())
        return -1;
    const std::string running = host::processStart(number);
    // It runs, but the host does not tell since when.
    if (running == "?")
        return -1;
    return running == start ? 1 : 0;
}
