// SPDX-License-Identifier: Apache-2.0
// The product information file: a second reader that takes a text apart by the rules alone
// says the same of any bytes, and what was read can be written and read again.
#include "fuzz/harness.h"
#include "tools/services/crc32.h"
#include "tools/settings/KazProductInfo.h"

#include <cctype>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

using Info = KazProductInfo;

bool isLetter(char c, const char* others) {
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
           std::string(others).find(c) != std::string::npos;
}

std::string stripped(const std::string& text) {
    std::size_t from = 0, to = text.size();
    while (from < to && (text[from] == ' ' || text[from] == '\t'))
        ++from;
    while (to > from && (text[to - 1] == ' ' || text[to - 1] == '\t'))
        --to;
    return text.substr(from, to - from);
}

/// The code points of a line; false where it is not UTF-8 or a control character is in it.
bool isClean(const std::string& line) {
    for (std::size_t i = 0; i < line.size();) {
        const unsigned lead = static_cast<unsigned char>(line[i]);
        const int more = lead < 0x80       ? 0
                         : lead >> 5 == 6  ? 1
                         : lead >> 4 == 14 ? 2
                         : lead >> 3 == 30 ? 3
                                           : -1;
        if (more < 0 || i + static_cast<std::size_t>(more) >= line.size())
            return false;
        unsigned code = more == 0 ? lead : lead & (0x3Fu >> more);
        for (int k = 1; k <= more; ++k) {
            const unsigned next = static_cast<unsigned char>(line[i + static_cast<std::size_t>(k)]);
            if (next >> 6 != 2)
                return false;
            code = code << 6 | (next & 0x3F);
        }
        constexpr unsigned least[] = {0, 0x80, 0x800, 0x10000};
        if (code < least[more] || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000))
            return false;
        if ((code < 0x20 && code != '\t') || (code >= 0x7F && code < 0xA0))
            return false;
        i += static_cast<std::size_t>(more) + 1;
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
    const int year = std::stoi(text), month = std::stoi(text.substr(5)),
              day = std::stoi(text.substr(8));
    int days = month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
    if (month == 2)
        days = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0 ? 29 : 28;
    return year > 0 && month >= 1 && month <= 12 && day >= 1 && day <= days;
}

/// Takes the words in front of the path off.
bool isPart(std::string& text) {
    std::vector<std::string> words;
    for (int i = 0; i < 3; ++i) {
        const std::string word = text.substr(0, text.find_first_of(" \t"));
        words.push_back(word);
        text = stripped(text.substr(word.size()));
    }
    bool good =
        hasForm(words[0], "hhhhhhhh") && !words[1].empty() && !words[2].empty() && !text.empty();
    for (const char c : words[1])
        good = good && c >= '0' && c <= '9';
    if (!good || text.find_first_of(":\\") != text.npos)
        return false;
    for (const char* other : {"/../", "/./", "//"}) // a file has one path only
        if (("/" + text + "/").find(other) != std::string::npos)
            return false;
    std::string digits = words[1];
    digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size()));
    const std::string most = "18446744073709551615";
    return digits.size() < most.size() || (digits.size() == most.size() && digits <= most);
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
        for (const char c : key)
            if (!isLetter(c, "_-"))
                return false;
        if (key == "part") {
            std::string path = value;
            return isPart(path) && paths.insert(path).second;
        }
        if (key == "checksum")
            return hasForm(sum = value, "hhhhhhhh");
        bool isNumber = value.size() <= 9;
        for (const char c : value)
            isNumber = isNumber && c >= '0' && c <= '9';
        return values.emplace(key, value).second && (key != "build" || isNumber) &&
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
    constexpr const char* lines[] = {"name=b",
                                     "x",
                                     "=a",
                                     "name=",
                                     "Name=a",
                                     "k=1\nk=2",
                                     "checksum=00000000\nk=1",
                                     "a b=c",
                                     "build=1234567890",
                                     "build=999999999",
                                     "build=-1",
                                     "date=2026-02-29",
                                     "date=2024-02-29",
                                     "date=2026-1-01",
                                     "checksum=0",
                                     "part=0 0 - a",
                                     "part=00000000 x - a",
                                     "part=00000000 0 a",
                                     "part=00000000 18446744073709551616 - a",
                                     "k=\x01",
                                     "k=\xFF",
                                     "k=a\rb",
                                     "k=\xC2\x85",
                                     "part=00000000 0 - ../a",
                                     "part=00000000 0 - a/..",
                                     "part=00000000 0 - a/../b",
                                     "part=00000000 0 - /a",
                                     "part=00000000 0 - C:a",
                                     "part=00000000 0 - a:b",
                                     "part=00000000 0 - a\\b",
                                     "part=00000000 0 - ..",
                                     "part=00000000 0 - ..a/b..",
                                     "part=00000000 0 - a\npart=00000000 1 2 a",
                                     "\n \t\n% \xFF\x01"};
    if (choice < std::size(lines))
        return lines[choice] + std::string("\n");
    if (choice < 48) // about the longest key and the longest value
        return std::string(choice - 4U, 'k') + "=" + std::string(choice + 957U, 'v') + "\n";
    return "";
}

} // namespace

void fuzz::harness(Input& input) {
    const std::string odd = oddLine(input.last() % 64);
    if (input.flag())
        return compare(input.rest()), 0;
    whatIsSetIsRead(input);
    if (!odd.empty())
        compare(odd);
    compare("name=a\nversion=1\n" + odd + someLines(input));
}
