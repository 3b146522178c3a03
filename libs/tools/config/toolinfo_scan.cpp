// SPDX-License-Identifier: Apache-2.0
// Lines are cut and split by the functions that fill the table, and the files follow one
// another by the one walk there is: what is shown cannot differ from what is read.
#include "tools/config/toolinfo_scan.h"

#include "tools/config/detail/ToolInfoChain.h"
#include "tools/config/detail/ToolInfoState.h"
#include "tools/config/toolinfo.h"
#include "tools/files/kazpath.h"
#include "tools/platform/host_environment.h"

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using kaz::detail::ToolInfoChainEnd;
using kaz::detail::ToolInfoLine;
using kaz::detail::ToolInfoState;

using Visit = void (*)(const KazVariableLine*, void*);

/// One line of a text as the table takes it, and where.
struct TakenLine {
    std::string_view text;
    int number = 0;
    bool isCut = false;
    bool hasNul = false;
};

class LineWalk {
public:
    explicit LineWalk(std::string_view text) : rest_(text) {}

    bool next(TakenLine& line) {
        if (rest_.empty())
            return false;
        const char* const begin = rest_.data();
        // What was taken is known from how far the rest has moved, as the text may end at a NUL.
        line.text = kaz::detail::takeToolInfoLine(rest_);
        const auto taken = static_cast<std::size_t>(rest_.data() - begin);
        const bool isEnded = begin[taken - 1] == '\n';
        // The flag is still that of the line before: its rest has the same number.
        line.number = line.isCut ? line.number : line.number + 1;
        line.hasNul = line.text.size() + (isEnded ? 1 : 0) < taken;
        line.isCut = !isEnded && !rest_.empty();
        if (line.isCut && rest_.front() == '\n') {
            // Of a line of just that length only the end is left, which defines nothing.
            rest_.remove_prefix(1);
            line.isCut = false;
        }
        return true;
    }

private:
    std::string_view rest_;
};

int kindOf(std::string_view text, const ToolInfoLine& parts, bool isDefinition) {
    if (isDefinition)
        return KazLineDefinition;
    if (!text.empty() && (text.front() == '%' || text.front() == '.'))
        return KazLineComment;
    if (text.find_first_not_of(" \t\r") == text.npos)
        return KazLineBlank;
    return parts.name.data() != nullptr ? KazLineNoName : KazLineNoEquals;
}

class Scanner final : public kaz::detail::ToolInfoReader {
public:
    Scanner(Visit visit, void* data, const KazString& link)
        : visit_(visit), data_(data), linkValue_(link.getValue()), hasLink_(false) {}

    const char* next() const override { return linkValue_.c_str(); }
    void read(std::string text, const KazString& file) override {
        // Each file says anew where the chain goes on; one that says nothing ends it.
        linkValue_.clear();
        hasLink_ = false;
        visitLines(text, file, false);
    }

    /// @p lastWins: the last definition of "ToolInfo" counts, else the first one.
    void visitLines(const std::string& text, const KazString& file, bool lastWins) {
        TakenLine line;
        for (LineWalk walk(text); walk.next(line);) {
            ToolInfoLine parts;
            const bool isDefinition = kaz::detail::parseToolInfoLine(line.text, parts);
            const int kind = kindOf(line.text, parts, isDefinition);
            if (isDefinition && parts.name == "ToolInfo" && (lastWins || !hasLink_))
                keepLink(file, line.number, parts.value);
            const bool hasValue = isDefinition || kind == KazLineNoName;
            name_ = parts.name;
            // A line without a value is shown whole.
            value_ = hasValue ? parts.value : line.text;
            const int marks = (line.isCut ? KazLineIsCut : 0) | (line.hasNul ? KazLineHasNul : 0);
            visitOne(file, line.number, kind | marks, isDefinition ? name_.c_str() : nullptr,
                     value_.c_str());
        }
    }

    void visitEnd(ToolInfoChainEnd end, const KazString& stop) {
        const int kind = end == ToolInfoChainEnd::Unreadable ? KazChainUnreadable
                         : end == ToolInfoChainEnd::Cycle    ? KazChainCycle
                                                             : KazChainTooLong;
        // Told at the line that names the file, since that is the one to mend.
        if (end != ToolInfoChainEnd::Complete)
            visitOne(linkFile_, linkLine_, kind, "ToolInfo", stop);
    }

private:
    void keepLink(const KazString& file, int number, std::string_view value) {
        linkFile_ = file;
        linkLine_ = number;
        linkValue_ = value;
        hasLink_ = true;
    }

    void visitOne(const KazString& file, int number, int kind, const char* name,
                  const char* value) {
        const KazVariableLine line{file, number, kind, name, value};
        visit_(&line, data_);
    }

    Visit visit_;
    void* data_;
    std::string name_, value_; // what is shown has to be terminated
    KazString linkFile_;
    int linkLine_ = 0;
    std::string linkValue_;
    bool hasLink_;
};

} // namespace

int TI_Vscan(Visit visit, void* data) {
    if (visit == nullptr)
        return -1;
    // The first file's name is known only after the search.
    TI_Vinit();
    std::vector<KazString> names{TI_Vfile(0)};
    std::string text;
    if (!names.front() ||
        !kaz::detail::readToolInfo(kaz::detail::openToolInfo(names.front()), names.front(), text))
        return -1;
    Scanner scanner(visit, data, ToolInfoState::instance().linkBefore);
    scanner.visitLines(text, names.front(), true);
    KazString stop;
    const ToolInfoChainEnd end = kaz::detail::followChain(scanner, names, stop);
    scanner.visitEnd(end, stop);
    return 0;
}

int TI_Vscan_file(const char* path, Visit visit, void* data) {
    if (path == nullptr || visit == nullptr)
        return -1;
    const KazString name = kazNormalizedPath(path);
    std::string text;
    if (!kaz::detail::readToolInfo(kaz::detail::openToolInfo(path), name, text))
        return -1;
    Scanner(visit, data, KazString()).visitLines(text, name, true);
    return 0;
}

void TI_EnvVwalk(void (*visit)(const char* variable, const char* value, void* data), void* data) {
    if (visit == nullptr)
        return;
    // In the order of names: that of the environment changes from start to start.
    std::map<std::string, std::string> variables;
    for (char** entry = kaz::host::environmentEntries(); entry != nullptr && *entry != nullptr;
         ++entry) {
        const std::string_view text = *entry;
        const std::size_t equals = text.find('=');
        // The first one of a name is the one that counts.
        if (text.starts_with("KAZ_") && equals != text.npos)
            variables.emplace(text.substr(0, equals), text.substr(equals + 1));
    }
    for (const auto& [name, value] : variables)
        visit(name.c_str(), value.c_str(), data);
}
