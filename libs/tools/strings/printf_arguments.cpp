// SPDX-License-Identifier: Apache-2.0
// Two formats that give the same text here take the same arguments, so a translated one can stand
// for its original. Flags, widths and precisions of digits do not count; a "*" is an argument of
// type int. What printf would do something undefined with is written into the text, which then
// equals that of no good format.
#include "tools/strings/printf_arguments.h"

#include "tools/util/detail/or_empty.h"

#include <algorithm>
#include <map>
#include <string>
#include <string_view>

namespace {

class Scanner {
public:
    explicit Scanner(std::string_view text) : rest_(text) {}

    /// One pass over the format; arguments are kept in the order of their positions.
    std::string scan() {
        for (std::size_t at; (at = rest_.find('%')) != std::string_view::npos;) {
            rest_.remove_prefix(at + 1);
            scanConversion();
        }
        // printf cannot step over an argument whose type it is not told.
        std::string result;
        int next = 1;
        for (const auto& [position, conversion] : arguments_) {
            for (; next < position; ++next)
                append(result, "(missing)");
            append(result, conversion);
            ++next;
        }
        return result + (last_ > 0 && hasPositions_ ? " (with and without positions)" : "");
    }

private:
    static void append(std::string& result, const std::string& conversion) {
        result += (result.empty() ? "%" : " %") + conversion;
    }

    std::string takeWhile(std::string_view characters) {
        const std::size_t length = std::min(rest_.find_first_not_of(characters), rest_.size());
        std::string taken(rest_.substr(0, length));
        rest_.remove_prefix(length);
        return taken;
    }

    /// "3$" in front of a conversion or behind "*"; 0 when there is none.
    int takePosition() {
        const std::size_t digits = std::min(rest_.find_first_not_of("0123456789"), rest_.size());
        // Three digits are more arguments than a call has, and fit an int.
        if (digits == 0 || digits > 3 || digits >= rest_.size() || rest_[digits] != '$')
            return 0;
        const int position = std::stoi(std::string(rest_.substr(0, digits)));
        // "0$" is none, and stays in the text to be found wrong as a conversion.
        if (position > 0)
            rest_.remove_prefix(digits + 1);
        return position;
    }

    void note(int position, const std::string& conversion) {
        hasPositions_ = hasPositions_ || position > 0;
        // An argument may be used twice, but only as the same type.
        std::string& known = arguments_[position > 0 ? position : ++last_];
        if (known.empty())
            known = conversion;
        else if (known != conversion)
            known += " and " + conversion;
    }

    /// A width or a precision. Gives what is wrong with it: printf would make a
    /// text of as many characters.
    std::string takeNumber() {
        if (!rest_.starts_with('*'))
            return takeWhile("0123456789").size() > 3 ? "(too wide)" : "";
        rest_.remove_prefix(1);
        note(takePosition(), "d");
        return "";
    }

    void scanConversion() {
        if (rest_.starts_with('%')) {
            rest_.remove_prefix(1);
            return;
        }
        const int position = takePosition();
        takeWhile("-+ #0'");
        std::string conversion = takeNumber();
        if (rest_.starts_with('.')) {
            rest_.remove_prefix(1);
            conversion += takeNumber();
        }
        conversion += takeWhile("hlLqjzt");
        if (rest_.empty()) {
            note(0, conversion + "(cut off)");
            return;
        }
        const char letter = rest_.front();
        rest_.remove_prefix(1);
        // "i" and "d" read the same argument. "-" and the like are left to differ.
        note(position, conversion + (letter == 'i' ? 'd' : letter));
    }

    std::string_view rest_;
    std::map<int, std::string> arguments_;
    int last_ = 0; ///< the last argument taken without a position
    bool hasPositions_ = false;
};

} // namespace

KazString kazPrintfArguments(const char* format) {
    return Scanner(kaz::detail::orEmpty(format)).scan().c_str();
}
