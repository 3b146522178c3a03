#include "tools/config/detail/ToolInfoTable.h"

#include <algorithm>
#include <cstring>

namespace kaz::detail {

namespace {

constexpr std::size_t lineLimit = 5120;

std::string_view trimmedBack(std::string_view text, std::string_view set) {
    return text.substr(0, text.find_last_not_of(set) + 1);
}

std::string_view trimmed(std::string_view text, std::string_view set) {
    const std::size_t start = text.find_first_not_of(set);
    return start == text.npos ? std::string_view() : trimmedBack(text.substr(start), set);
}

/// Keeps one definition a name, in order of the names: the last one of the file
/// when later definitions replace earlier ones, else the first.
void sortUnique(std::vector<ToolInfoLine>& lines, bool lastWins) {
    if (lastWins)
        std::reverse(lines.begin(), lines.end());
    std::stable_sort(lines.begin(), lines.end(),
                     [](const ToolInfoLine& a, const ToolInfoLine& b) { return a.name < b.name; });
    const auto end =
        std::unique(lines.begin(), lines.end(),
                    [](const ToolInfoLine& a, const ToolInfoLine& b) { return a.name == b.name; });
    lines.erase(end, lines.end());
}

std::unique_ptr<KazStringToStringMap> makeMap() {
    return std::make_unique<KazStringToStringMap>(true, 1);
}

int compare(std::string_view a, const KazString& b) {
    return a.compare(b.getValue());
}

} // namespace

KazString makeString(std::string_view text) {
    KazString result;
    if (!text.empty()) {
        std::memcpy(result.getBuffer(static_cast<int>(text.size())), text.data(), text.size());
        result.releaseBuffer(static_cast<int>(text.size()));
    }
    return result;
}

bool parseToolInfoLine(std::string_view line, ToolInfoLine& result) {
    if (line.empty() || line.front() == '%' || line.front() == '.')
        return false;
    line = trimmedBack(line, "\n\r \t");
    const std::size_t equals = line.find('=');
    if (equals == line.npos)
        return false;
    result.name = trimmed(line.substr(0, equals), " ");
    result.value = trimmed(line.substr(equals + 1), " ");
    return !result.name.empty();
}

std::vector<ToolInfoLine> parseToolInfoText(std::string_view text) {
    std::vector<ToolInfoLine> lines;
    while (!text.empty()) {
        std::string_view line = text.substr(0, lineLimit);
        line = line.substr(0, line.find('\n'));
        text.remove_prefix(std::min(line.size() + (line.size() < lineLimit ? 1 : 0), text.size()));
        ToolInfoLine definition;
        if (parseToolInfoLine(line.substr(0, line.find('\0')), definition))
            lines.push_back(definition);
    }
    return lines;
}

ToolInfoTable& ToolInfoTable::instance() {
    static ToolInfoTable& table = *new ToolInfoTable;
    return table;
}

ToolInfoTable::ToolInfoTable() : values(makeMap()) {}

ToolInfoTable::Origins::const_iterator ToolInfoTable::position(const Origins& origins,
                                                               const KazString& name) {
    return std::lower_bound(origins.begin(), origins.end(), name,
                            [](const Origin& origin, const KazString& wanted) {
                                return std::strcmp(origin.name, wanted) < 0;
                            });
}

const ToolInfoTable::Origin* ToolInfoTable::originOf(const KazString& name) const {
    const auto found = position(origins, name);
    return found != origins.end() && found->name == name ? &*found : nullptr;
}

bool ToolInfoTable::define(const KazString& name, const KazString& value, bool replace) {
    const auto index = position(origins, name) - origins.cbegin();
    if (originOf(name) != nullptr) {
        if (!values->bind(name, value, replace))
            return false;
        origins[static_cast<std::size_t>(index)].file.clear();
        return true;
    }
    // Room first: once the value is bound, the second step cannot fail.
    if (origins.size() == origins.capacity())
        origins.reserve(2 * origins.size() + 1);
    values->bind(name, value, replace);
    origins.insert(origins.begin() + index, Origin{name, KazString()});
    return true;
}

void ToolInfoTable::remove(const KazString& name) {
    const auto place = position(origins, name);
    if (place != origins.end() && place->name == name) {
        origins.erase(place);
        values->unbind(name);
    }
}

bool ToolInfoTable::find(const KazString& name, KazString& value) const {
    return values->valueOf(name, value);
}

bool ToolInfoTable::defines(const KazString& name) const {
    return values->isBound(name);
}

void ToolInfoTable::defineAll(std::vector<ToolInfoLine> lines, const KazString& file,
                              bool replace) {
    sortUnique(lines, replace);
    auto mergedValues = makeMap();
    Origins mergedOrigins;
    mergedOrigins.reserve(origins.size() + lines.size());
    const auto take = [&](const KazString& name, const KazString& value, const KazString& from) {
        mergedValues->bind(name, value, true);
        mergedOrigins.push_back(Origin{name, from});
    };

    KazStringToStringMapIterator old(*values);
    auto oldOrigin = origins.cbegin();
    auto line = lines.cbegin();
    while (oldOrigin != origins.cend() || line != lines.cend()) {
        const int order = oldOrigin == origins.cend() ? -1
                          : line == lines.cend()      ? 1
                                                      : compare(line->name, oldOrigin->name);
        if (order < 0 || (order == 0 && replace))
            take(makeString(line->name), makeString(line->value), file);
        else
            take(oldOrigin->name, old.getValue(), oldOrigin->file);
        if (order <= 0)
            ++line;
        if (order >= 0) {
            ++oldOrigin;
            old.next();
        }
    }
    values = std::move(mergedValues);
    origins = std::move(mergedOrigins);
}

KazString ToolInfoTable::fileOf(const KazString& name) const {
    const Origin* origin = originOf(name);
    return origin != nullptr ? origin->file : KazString();
}

void ToolInfoTable::appendNames(std::vector<KazString>& names) const {
    names.reserve(names.size() + origins.size());
    for (const Origin& origin : origins)
        names.push_back(origin.name);
}

} // namespace kaz::detail
