// SPDX-License-Identifier: Apache-2.0
// Reading goes once over the text and decodes nothing but the section that is asked for:
// programs read one section and never write most of what they read. A change takes the
// text apart into lines that are kept as they stand, puts sections and lines in order and
// writes them again.
#include "tools/platform/posix/settings_text.h"

#include "tools/platform/posix/settings_line.h"

#include <algorithm>
#include <cstring>
#include <deque>
#include <iterator>
#include <utility>
#include <vector>

namespace kaz::host {

namespace {

constexpr std::string_view firstLine = "# Mox settings ";
constexpr std::string_view version = "1";

/// Takes the first line, without its end, from a text that is not empty.
std::string_view takeLine(std::string_view& text) {
    const auto* end = static_cast<const char*>(std::memchr(text.data(), '\n', text.size()));
    const std::size_t length =
        end != nullptr ? static_cast<std::size_t>(end - text.data()) : text.size();
    std::string_view line = text.substr(0, length);
    text.remove_prefix(std::min(length + 1, text.size()));
    if (end != nullptr && line.ends_with('\r'))
        line.remove_suffix(1);
    return line;
}

bool isBefore(std::string_view a, std::string_view b) {
    return compareSettingsNames(a, b) < 0;
}

/// Puts items in the order of their names. Of those with one name @p merge keeps one.
template <typename Item, typename Name, typename Merge>
void putInOrder(std::vector<Item>& items, Name name, Merge merge) {
    const auto less = [&](const Item& a, const Item& b) { return isBefore(name(a), name(b)); };
    // Files that this library wrote are in order. Stable, so that of lines with one name the last
    // one in the file is the one that counts.
    if (!std::is_sorted(items.begin(), items.end(), less))
        std::stable_sort(items.begin(), items.end(), less);
    std::size_t kept = 0;
    for (std::size_t i = 1; i < items.size(); ++i) {
        if (less(items[kept], items[i])) {
            if (++kept != i)
                items[kept] = std::move(items[i]);
        } else {
            merge(items[kept], items[i]);
        }
    }
    if (!items.empty())
        items.resize(kept + 1);
}

/// The part of @p path below @p section; not so when it does not lie there.
bool isBelow(std::string_view path, std::string_view section, std::string_view& rest) {
    if (section.empty()) {
        rest = path;
        return !path.empty();
    }
    if (path.size() <= section.size() || path[section.size()] != '/' ||
        compareSettingsNames(path.substr(0, section.size()), section) != 0)
        return false;
    rest = path.substr(section.size() + 1);
    return true;
}

struct Line {
    std::string name;
    std::string_view text; ///< as it stands
};

struct Section {
    std::string path;    ///< the whole line when that is not understood
    bool isKnown = true; ///< false for such a one
    std::vector<Line> values;
    std::vector<std::string_view> others; ///< lines that are not understood
};

/// The text, taken apart. It must outlive this.
class Document {
public:
    explicit Document(std::string_view text);

    void removeAll(std::string_view section);
    void change(const std::string& section, const SettingsChange& change);
    std::string text() const;

private:
    void addLine(Section& section, std::string_view line);
    void order();
    std::vector<Section>::iterator placeOf(std::string_view path);
    Section& sectionFor(const std::string& path);

    std::string_view first_; ///< the first line when it tells a version
    std::vector<std::string_view> front_;
    std::vector<Section> sections_;
    std::deque<std::string> made_; ///< what lines of ours point to
    SettingsEntry scratch_;
};

Document::Document(std::string_view text) {
    if (text.starts_with(firstLine))
        first_ = takeLine(text);
    while (!text.empty()) {
        const std::string_view line = takeLine(text);
        if (line.empty() || line.front() == '#')
            continue;
        if (line.front() == '[') {
            Section& section = sections_.emplace_back();
            section.isKnown = readHeader(line, section.path);
            if (!section.isKnown)
                section.path = line;
        } else if (sections_.empty()) {
            front_.push_back(line);
        } else {
            addLine(sections_.back(), line);
        }
    }
    order();
}

void Document::addLine(Section& section, std::string_view line) {
    if (section.isKnown && readLine(line, scratch_))
        section.values.push_back({scratch_.name, line});
    else
        section.others.push_back(line);
}

void Document::order() {
    // Both kinds by their lines, and so never one for the other.
    std::stable_partition(sections_.begin(), sections_.end(),
                          [](const Section& section) { return section.isKnown; });
    const auto firstUnknown = std::find_if(sections_.begin(), sections_.end(),
                                           [](const Section& each) { return !each.isKnown; });
    std::vector<Section> unknown(std::make_move_iterator(firstUnknown),
                                 std::make_move_iterator(sections_.end()));
    sections_.erase(firstUnknown, sections_.end());
    const auto path = [](const Section& section) { return std::string_view(section.path); };
    const auto join = [](Section& into, Section& from) {
        std::move(from.values.begin(), from.values.end(), std::back_inserter(into.values));
        into.others.insert(into.others.end(), from.others.begin(), from.others.end());
    };
    putInOrder(sections_, path, join);
    putInOrder(unknown, path, join);
    for (Section& section : sections_)
        putInOrder(
            section.values, [](const Line& line) { return std::string_view(line.name); },
            [](Line& earlier, Line& later) { earlier = std::move(later); });
    std::move(unknown.begin(), unknown.end(), std::back_inserter(sections_));
}

std::vector<Section>::iterator Document::placeOf(std::string_view path) {
    return std::partition_point(sections_.begin(), sections_.end(), [&](const Section& each) {
        return each.isKnown && isBefore(each.path, path);
    });
}

/// The section, made where it is missing. Of names above it that are there already it takes
/// the spelling over.
/// Logarithmic in the sections for one that is there; for one that is made, linear for each name
/// above.
Section& Document::sectionFor(const std::string& path) {
    const auto place = placeOf(path);
    if (place != sections_.end() && place->isKnown && compareSettingsNames(place->path, path) == 0)
        return *place;
    Section made;
    made.path = path;
    for (std::size_t end = path.rfind('/'); end != path.npos && end > 0;
         end = path.rfind('/', end - 1)) {
        const std::string_view above = std::string_view(path).substr(0, end);
        const auto known =
            std::find_if(sections_.begin(), sections_.end(), [&](const Section& each) {
                std::string_view rest;
                return each.isKnown && (compareSettingsNames(each.path, above) == 0 ||
                                        isBelow(each.path, above, rest));
            });
        if (known != sections_.end()) {
            made.path.replace(0, end, known->path, 0, end);
            break;
        }
    }
    return *sections_.insert(place, std::move(made));
}

/// What is not understood stays: a newer version may have written it.
void Document::removeAll(std::string_view section) {
    std::string_view rest;
    for (Section& each : sections_)
        if (each.isKnown &&
            (compareSettingsNames(each.path, section) == 0 || isBelow(each.path, section, rest)))
            each.values.clear();
}

void Document::change(const std::string& section, const SettingsChange& change) {
    std::vector<Line>& lines = sectionFor(section).values;
    auto place = std::lower_bound(
        lines.begin(), lines.end(), change.name,
        [](const Line& line, const std::string& name) { return isBefore(line.name, name); });
    const bool isThere =
        place != lines.end() && compareSettingsNames(place->name, change.name) == 0;
    if (!change.value) {
        if (isThere)
            lines.erase(place);
        return;
    }
    const std::string& name = isThere && !change.removes ? place->name : change.name;
    // A deque, as lines point to its texts and it does not move them.
    Line made{name, made_.emplace_back(lineOf(name, *change.value))};
    if (isThere)
        *place = std::move(made);
    else
        lines.insert(place, std::move(made));
}

std::string Document::text() const {
    std::string result;
    // A CR at its end belongs to the line; the next reader drops one.
    const auto add = [&](std::string_view line) {
        (result += line) += line.ends_with('\r') ? "\r\n" : "\n";
    };
    result += first_.empty() ? std::string(firstLine).append(version) : std::string(first_);
    result += '\n';
    std::for_each(front_.begin(), front_.end(), add);
    for (const Section& section : sections_) {
        // A section goes with its last line.
        if (section.values.empty() && section.others.empty())
            continue;
        result += '\n';
        add(section.isKnown ? headerOf(section.path) : section.path);
        for (const Line& line : section.values)
            add(line.text);
        std::for_each(section.others.begin(), section.others.end(), add);
    }
    return result;
}

} // namespace

void readSettings(std::string_view text, std::string_view section, SettingsSection& result) {
    result = {};
    bool isWanted = false;
    std::string path;
    std::string_view rest;
    while (!text.empty()) {
        const std::string_view line = takeLine(text);
        if (line.empty() || line.front() == '#')
            continue;
        if (line.front() == '[') {
            const bool isKnown = readHeader(line, path);
            isWanted = isKnown && compareSettingsNames(path, section) == 0;
            if (isKnown && isBelow(path, section, rest))
                result.sections.emplace_back(rest.substr(0, rest.find('/')));
        } else if (isWanted && !readLine(line, result.values.emplace_back())) {
            result.values.pop_back();
        }
    }
    putInOrder(
        result.values, [](const SettingsEntry& entry) { return std::string_view(entry.name); },
        [](SettingsEntry& earlier, SettingsEntry& later) { earlier = std::move(later); });
    putInOrder(
        result.sections, [](const std::string& name) { return std::string_view(name); },
        [](std::string&, std::string&) {});
}

std::string changedSettings(std::string_view text, const std::string& section,
                            const SettingsChanges& changes) {
    Document document(text);
    if (changes.removesAll)
        document.removeAll(section);
    for (const SettingsChange& change : changes.changes)
        document.change(section, change);
    return document.text();
}

} // namespace kaz::host
