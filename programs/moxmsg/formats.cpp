#include "formats.h"

#include <algorithm>
#include <map>
#include <string_view>

namespace {

class Scanner {
public:
    explicit Scanner(std::string_view text) : rest(text) {}

    std::string scan() {
        for (std::size_t at; (at = rest.find('%')) != std::string_view::npos;) {
            rest.remove_prefix(at + 1);
            scanConversion();
        }
        std::string result;
        for (const auto& [position, conversion] : arguments)
            result += (result.empty() ? "%" : " %") + conversion;
        return result;
    }

private:
    std::string takeWhile(std::string_view characters) {
        const std::size_t length = std::min(rest.find_first_not_of(characters), rest.size());
        std::string taken(rest.substr(0, length));
        rest.remove_prefix(length);
        return taken;
    }

    /// "3$" in front of a conversion or behind "*"; 0 when there is none.
    int takePosition() {
        const std::size_t digits = std::min(rest.find_first_not_of("0123456789"), rest.size());
        if (digits == 0 || digits > 3 || digits >= rest.size() || rest[digits] != '$')
            return 0;
        const int position = std::stoi(std::string(rest.substr(0, digits)));
        rest.remove_prefix(digits + 1);
        return position;
    }

    void note(int position, const std::string& conversion) {
        arguments[position > 0 ? position : ++last] = conversion;
    }

    void takeNumber() {
        if (!rest.starts_with('*')) {
            takeWhile("0123456789");
            return;
        }
        rest.remove_prefix(1);
        note(takePosition(), "d");
    }

    void scanConversion() {
        const int position = takePosition();
        takeWhile("-+ #0'");
        takeNumber();
        if (rest.starts_with('.')) {
            rest.remove_prefix(1);
            takeNumber();
        }
        std::string conversion = takeWhile("hlLqjzt");
        if (rest.empty()) {
            note(0, conversion + "(cut off)");
            return;
        }
        const char letter = rest.front();
        rest.remove_prefix(1);
        if (letter != '%')
            note(position, conversion + (letter == 'i' ? 'd' : letter));
    }

    std::string_view rest;
    std::map<int, std::string> arguments;
    int last = 0;
};

} // namespace

std::string printfArguments(const std::string& text) {
    return Scanner(text).scan();
}
