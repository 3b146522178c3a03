// SPDX-License-Identifier: Apache-2.0
// The product information file: a second reader that takes a text apart by the rules alone
// says the same of any bytes, and what was read can be written and read again.
#include "fuzz/harness.h"
#include "fuzz/text_reference.h"
#include "kit/table.h"
#include "tools/services/crc32.h"
#include "tools/settings/KazProductInfo.h"

#include <cctype>
#include <charconv>
#include <chrono>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

using Info = KazProductInfo;

std::string stripped(const std::string& text) {
    const std::size_t from = std::min(text.find_first_not_of(" \t"), text.size());
    return text.substr(from, text.find_last_not_of(" \t") + 1 - from);
}

/// UTF-8 without control characters?
bool isClean(std::string_view line) {
    while (!line.empty()) {
        const auto [code, bytes] = reference::firstPiece(line);
        if (!code || (*code < 0x20 && *code != '\t') || (*code >= 0x7F && *code < 0xA0))
            return false;
        line.remove_prefix(bytes.size());
    }
    return true;
}

bool hasForm(const std::string& text, const std::string& form) { // 'd' digit, 'h' hexadecimal
    if (text.size() != form.size())
        return false;
    for (std::size_t i = 0; i < form.size(); ++i) {
        const int c = static_cast<unsigned char>(text[i]);
        if (form[i] == 'd' ? !std::isdigit(c) : form[i] == 'h' ? !std::isxdigit(c) : c != form[i])
            return false;
    }
    return true;
}

bool isDay(const std::string& text) {
    if (!hasForm(text, "dddd-dd-dd"))
        return false;
    const auto number = [&](std::size_t at) { return std::stoi(text.substr(at)); };
    return number(0) > 0 &&
           std::chrono::year_month_day(std::chrono::year(number(0)),
                                       std::chrono::month(static_cast<unsigned>(number(5))),
                                       std::chrono::day(static_cast<unsigned>(number(8))))
               .ok();
}

/// Does @p text hold digits and nothing else, and a number of this type?
template <class Number>
bool isNumber(const std::string& text) {
    Number number = 0;
    return text.find_first_not_of("0123456789") == text.npos &&
           std::from_chars(text.data(), text.data() + text.size(), number).ec == std::errc();
}

/// Takes the words in front of the path off.
bool isPart(std::string& text) {
    std::string words[3];
    for (std::string& word : words) {
        word = text.substr(0, text.find_first_of(" \t"));
        text = stripped(text.substr(word.size()));
    }
    for (const char* other : {"/../", "/./", "//"}) // a file has one path only
        if (("/" + text + "/").find(other) != std::string::npos)
            return false;
    return hasForm(words[0], "hhhhhhhh") && isNumber<std::uint64_t>(words[1]) &&
           !words[2].empty() && !text.empty() && text.find_first_of(":\\") == text.npos;
}

/// State and line, and the contents for the states that have any.
struct Model {
    Info::State state = Info::Malformed;
    int line = 0;
    std::map<std::string, std::string> values;
    std::set<std::string> paths;

    explicit Model(const std::string& bytes) {
        std::string before, sum;
        bool ended = false;
        for (std::size_t at = 0; at < bytes.size();) {
            ++line;
            const std::size_t end = bytes.find('\n', at);
            std::string text = bytes.substr(at, end == bytes.npos ? end : end - at);
            at = end == bytes.npos ? bytes.size() : end + 1;
            if (end != bytes.npos && !text.empty() && text.back() == '\r')
                text.pop_back();
            const bool isComment = !text.empty() && text[0] == '%';
            if (!isComment && !stripped(text).empty() && (ended || !take(text, sum)))
                return;
            ended = !sum.empty();
            if (!ended)
                before += text + "\n";
        }
        ++line;
        if (values["name"].empty() || values["version"].empty())
            return;
        line = 0;
        state = Info::NoChecksum;
        if (ended)
            state = std::stoul(sum, nullptr, 16) == kaz_crc32(0, before.data(), before.size())
                        ? Info::Good
                        : Info::WrongChecksum;
    }

    bool take(const std::string& text, std::string& sum) {
        const std::size_t equals = text.find('=');
        if (equals == text.npos || !isClean(text))
            return false;
        const std::string key = stripped(text.substr(0, equals)),
                          value = stripped(text.substr(equals + 1));
        if (key.empty() || key.size() > 40 || value.empty() || value.size() > 1000)
            return false;
        if (key.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789_-") != key.npos)
            return false;
        if (key == "part") {
            std::string path = value;
            return isPart(path) && paths.insert(path).second;
        }
        if (key == "checksum")
            return hasForm(sum = value, "hhhhhhhh");
        return values.emplace(key, value).second &&
               (key != "build" || (value.size() <= 9 && isNumber<int>(value))) &&
               (key != "date" || isDay(value));
    }
};

void compare(const std::string& bytes) {
    Info info;
    const Info::State state = info.parse(bytes.data(), static_cast<int>(bytes.size()));
    const Model model(bytes);
    FUZZ_CHECK(state == model.state && state == info.getState());
    FUZZ_CHECK(info.getErrorLine() == model.line);
    if (state == Info::Malformed) {
        FUZZ_CHECK(info.getText().isEmpty() && info.getPartCount() == 0);
        return;
    }
    FUZZ_CHECK(info.getPartCount() == static_cast<int>(model.paths.size()));
    for (const auto& [key, value] : model.values) {
        const bool isOwn = key == "name" || key == "version" || key == "build" || key == "date";
        FUZZ_CHECK(isOwn || info.getValue(key.c_str()) == value.c_str());
    }
    FUZZ_CHECK(info.getName() == model.values.at("name").c_str());
    Info again;
    FUZZ_CHECK(again.parse(info.getText()) == Info::Good);
    FUZZ_CHECK(again.getText() == info.getText() && again.getBuild() == info.getBuild());
    for (int i = 0; i < info.getPartCount(); ++i)
        FUZZ_CHECK(again.findPart(info.getPart(i).path) >= 0);
}

/// Whatever setters have taken can be read again, and nothing of what they have refused.
void whatIsSetIsRead(fuzz::Input input) {
    Info info;
    bool hasName = false, hasVersion = false;
    std::map<std::string, std::string> values;
    for (int steps = input.between(0, 12); steps > 0; --steps) {
        const std::string text = input.textOf("ab1=%.-+: \t\\/\x01\xC3\xA4#", 8);
        const std::string key = input.textOf("ab", 2);
        hasName = info.setName(text.c_str()) || hasName;
        hasVersion = info.setVersion(input.textOf("12.-a \t", 5).c_str()) || hasVersion;
        info.setDate(input.flag() ? "2026-11-21" : text.c_str());
        info.setBuild(input.between(-2, 5));
        if (info.setValue(key.c_str(), text.c_str()))
            values[key] = text;
        FUZZ_CHECK(info.getValue(key.c_str()) == values[key].c_str());
    }
    FUZZ_CHECK(info.getText().isEmpty() == (!hasName || !hasVersion));
    Info again;
    if (info.getText().isEmpty())
        return;
    FUZZ_CHECK(again.parse(info.getText()) == Info::Good && again.getText() == info.getText());
    for (const auto& [key, value] : values)
        FUZZ_CHECK(again.getValue(key.c_str()) == value.c_str());
}

/// Lines that are nearly right, so that more than the first is looked at.
std::string someLines(fuzz::Input& input) {
    constexpr const char* starts[] = {
        "name=", "version=",  "build=", "date=2026-", "part=00000000 ",     "part=",
        "k",     "checksum=", "% ",     " \t",        "part=0123abCD 12 - "};
    std::string text;
    unsigned crc = 0; // of the first part of the text
    std::size_t summed = 0;
    while (!input.empty()) {
        text += input.pick(starts) + input.textOf("a1=-./ \t\r:\\%\xC3\xA4\x01"
                                                  "0129",
                                                  12);
        text += input.byte() % 4 == 0 ? "\r\n" : "\n";
        if (input.byte() % 8 == 0) {
            crc = kaz_crc32(crc, text.data() + summed, text.size() - summed);
            summed = text.size();
            KazString sum;
            sum.format("checksum=%08x\n", crc);
            text += sum.getValue();
        }
    }
    return text;
}

/// A line that is the first wrong one, or just right.
std::string oddLine(std::uint8_t choice) {
    static const std::vector<std::string> lines =
        kit::parts("name=b|x|=a|name=|Name=a|k=1\nk=2|checksum=00000000\nk=1|a b=c|"
                   "build=1234567890|build=999999999|build=-1|date=2026-02-29|date=2024-02-29|"
                   "date=2026-1-01|checksum=0|part=0 0 - a|part=00000000 x - a|part=00000000 0 a|"
                   "part=00000000 18446744073709551616 - a|k=\x01|k=\xFF|k=a\rb|k=\xC2\x85|"
                   "part=00000000 0 - ../a|part=00000000 0 - a/..|part=00000000 0 - a/../b|"
                   "part=00000000 0 - /a|part=00000000 0 - C:a|part=00000000 0 - a:b|"
                   "part=00000000 0 - a\\b|part=00000000 0 - ..|part=00000000 0 - ..a/b..|"
                   "part=00000000 0 - a\npart=00000000 1 2 a|\n \t\n% \xFF\x01");
    if (choice < lines.size())
        return lines[choice] + "\n";
    if (choice < 48) // about the longest key and the longest value
        return std::string(choice - 4U, 'k') + "=" + std::string(choice + 957U, 'v') + "\n";
    return "";
}

} // namespace

void fuzz::harness(Input& input) {
    const std::string odd = oddLine(input.last() % 64);
    if (input.flag())
        return compare(input.rest());
    whatIsSetIsRead(input);
    if (!odd.empty())
        compare(odd);
    compare("name=a\nversion=1\n" + odd + someLines(input));
}
