// SPDX-License-Identifier: Apache-2.0
// Each line is looked at by itself, with the definition that counts in its place. One
// cause gives one finding: what begins with "#" was meant as a comment, and its name and
// value mean nothing; a name with a tab in it is not also near to the one without.
#include "common/findings.h"

#include "common/environment_findings.h"
#include "common/known_names.h"
#include "common/printable.h"
#include "tools/config/toolinfo.h"
#include "tools/files/path_text.h"
#include "tools/files/tifiles.h"
#include "tools/formats/nearwords.h"

#include <algorithm>
#include <climits>
#include <string_view>
#include <utility>

namespace {

bool isControl(char c) {
    return static_cast<unsigned char>(c) < ' ' || c == 0x7F;
}

/// Is there a carriage return that does not belong to the end of the line?
bool holdsReturn(std::string_view text) {
    const std::size_t end = text.find_last_not_of(" \t\r");
    return end != text.npos && text.substr(0, end).find('\r') != text.npos;
}

bool isQuoted(std::string_view value) {
    return value.size() > 1 && (value.front() == '"' || value.front() == '\'') &&
           value.back() == value.front();
}

/// What no name should hold; "" when it holds nothing of it.
std::string oddPart(const std::string& name) {
    if (name.find('\t') != name.npos)
        return "a tab";
    if (std::any_of(name.begin(), name.end(), isControl))
        return "a control character";
    if (name.find(' ') != name.npos)
        return "a blank";
    if (name.find_first_of("\"'`") != name.npos)
        return "a quote";
    return "";
}

bool isMark(std::string_view text, std::string_view mark) {
    return text.substr(0, mark.size()) == mark;
}

class Search {
public:
    explicit Search(const Configuration& configuration) : configuration_(configuration) {}

    std::vector<Finding> run() {
        for (const ConfigLine& line : configuration_.lines())
            lookAt(line);
        addEnvironmentFindings(configuration_, known_, findings_);
        // Findings of one line stay in the order of looking, which goes from the line to its parts.
        std::stable_sort(findings_.begin(), findings_.end(), [](const auto& a, const auto& b) {
            return std::pair(fileOrder(a), a.line) < std::pair(fileOrder(b), b.line);
        });
        return std::move(findings_);
    }

private:
    static int fileOrder(const Finding& finding) {
        // The environment has no place and comes behind all files.
        return finding.file < 0 ? INT_MAX : finding.file;
    }

    void tell(Finding::Severity severity, const ConfigLine& line, std::string text,
              const char* code) {
        findings_.push_back({severity, line.file, line.number, std::move(text), code});
    }

    void lookAt(const ConfigLine& line) {
        lookAtExtent(line);
        const bool isComment = line.kind == KazLineComment || line.kind == KazLineBlank;
        const std::string& start = line.isDefinition() ? line.name : line.value;
        // Kinds from KazChainUnreadable on tell of a chain's end and show no text of a line.
        if (!isComment && line.kind < KazChainUnreadable && isMark(start, "#"))
            return tell(Finding::Warning, line,
                        R"(a line that begins with "#" is no comment ("%" and "." begin one))" +
                            (line.isDefinition() ? ": it defines " + quoted(line.name) : ""),
                        "hash-comment");
        if (holdsReturn(line.value) || line.name.find('\r') != line.name.npos)
            tell(Finding::Warning, line, "a carriage return within a line does not end it",
                 "carriage-return");
        lookAtKind(line);
    }

    /// What is not read as the line that it looks like.
    void lookAtExtent(const ConfigLine& line) {
        // All pieces of a long line have one number; it is told at the first.
        const bool isRest = line.file == cutFile_ && line.number == cutLine_;
        if (line.isCut && !isRest) {
            cutFile_ = line.file;
            cutLine_ = line.number;
            tell(Finding::Warning, line,
                 "the line is longer than 5120 characters: the rest is a line of its own",
                 "long-line");
        }
        if (line.hasNul)
            tell(Finding::Error, line, "a NUL byte ends the line: what follows it is not read",
                 "nul-byte");
        if (line.number == 1 && !isRest)
            lookForMark(line);
    }

    void lookForMark(const ConfigLine& line) {
        const std::string& start = line.isDefinition() ? line.name : line.value;
        if (isMark(start, "\xEF\xBB\xBF"))
            tell(Finding::Error, line,
                 "the file begins with a byte order mark, which is read as a part of the line",
                 "byte-order-mark");
        else if (isMark(start, "\xFF\xFE") || isMark(start, "\xFE\xFF"))
            tell(Finding::Error, line,
                 "the file begins with a byte order mark of UTF-16, which is not read here",
                 "byte-order-mark");
    }

    void lookAtKind(const ConfigLine& line) {
        switch (line.kind) {
        case KazLineDefinition:
            return lookAtDefinition(line);
        case KazLineNoEquals:
            return tell(Finding::Warning, line, R"(there is no "=": the line defines nothing)",
                        "no-equals");
        case KazLineNoName:
            return tell(Finding::Warning, line,
                        R"(there is no name before "=": the line defines nothing)", "no-name");
        case KazChainUnreadable:
        case KazChainCycle:
        case KazChainTooLong:
            return lookAtEnd(line);
        default:
            return;
        }
    }

    /// Whoever names the file beside this one finds it nowhere.
    bool isRelative(const ConfigLine& end) const {
        const std::vector<const ConfigLine*> links = configuration_.definitionsOf("ToolInfo");
        return std::any_of(links.begin(), links.end(), [&end](const ConfigLine* link) {
            return link->file == end.file && link->number == end.number &&
                   !kazIsExplicitPath(link->value.c_str());
        });
    }

    void lookAtEnd(const ConfigLine& line) {
        constexpr const char* below = " (a relative name is meant below the installation root)";
        const std::string name =
            printable(kazHostPath(line.value.c_str()).getValue()); // what was tried
        if (line.kind == KazChainUnreadable)
            tell(Finding::Error, line,
                 name + " cannot be read: the chain of files ends here" +
                     (isRelative(line) ? below : ""),
                 "chain-unreadable");
        else if (line.kind == KazChainCycle)
            tell(Finding::Warning, line,
                 name + " has been read already: the chain of files ends here", "chain-cycle");
        else
            tell(Finding::Warning, line, name + " is not read: a chain has ten files at most",
                 "chain-too-long");
    }

    void lookAtDefinition(const ConfigLine& line) {
        if (isSetByLibrary(line.name) && line.name != "ToolInfo")
            // Nothing else is said of a line that has no effect.
            return tell(Finding::Warning, line,
                        quoted(line.name) + " is set by the library: the line has no effect",
                        "reserved");
        const ConfigLine& decisive = configuration_.decisiveInFile(line);
        if (&decisive != &line)
            lookAtDuplicate(line, decisive);
        else
            lookAtEffect(line);
        lookAtValue(line);
        lookAtName(line);
    }

    void lookAtDuplicate(const ConfigLine& line, const ConfigLine& decisive) {
        const bool isSame = line.value == decisive.value;
        tell(isSame ? Finding::Note : Finding::Warning, line,
             quoted(line.name) +
                 (configuration_.lastCountsIn(line.file) ? " is defined again in line "
                                                         : " is defined already in line ") +
                 std::to_string(decisive.number) +
                 (isSame ? ", to the same value" : ": this line has no effect"),
             "duplicate");
    }

    /// The definition counts in its file. What "ToolInfo" names is for each file to say.
    void lookAtEffect(const ConfigLine& line) {
        if (line.value.empty())
            tell(Finding::Note, line,
                 line.name == "ToolInfo"
                     ? R"("ToolInfo" is empty: the chain of files ends here)"
                     : quoted(line.name) +
                           " is empty: it reads as undefined, and no later file can define it",
                 "empty");
        if (line.name == "ToolInfo")
            return;
        const ConfigLine& decisive = configuration_.decisive(line.name);
        if (&decisive != &line && decisive.value != line.value)
            tell(Finding::Note, line,
                 quoted(line.name) + " is " + quoted(decisive.value) + " by " +
                     printable(configuration_.placeOf(decisive)) +
                     (configuration_.isFurther(decisive.file) ? ", which replaces it"
                                                              : ", which comes first"),
                 "shadowed");
    }

    void lookAtValue(const ConfigLine& line) {
        if (isQuoted(line.value))
            tell(Finding::Note, line, "the quotes are a part of the value of " + quoted(line.name),
                 "quoted");
        // A carriage return has been told with the line.
        const auto odd = [](char c) { return isControl(c) && c != '\r'; };
        if (const auto c = std::find_if(line.value.begin(), line.value.end(), odd);
            c != line.value.end())
            tell(Finding::Warning, line,
                 "the value of " + quoted(line.name) +
                     (*c == '\t' ? " holds a tab" : " holds a control character"),
                 "odd-value");
    }

    void lookAtName(const ConfigLine& line) {
        if (const std::string part = oddPart(line.name); !part.empty())
            return tell(Finding::Warning, line, "the name " + quoted(line.name) + " holds " + part,
                        "odd-name");
        if (line.name[0] == '%' || line.name[0] == '.')
            return tell(Finding::Warning, line,
                        "the line defines " + quoted(line.name) +
                            ": only what begins with \"%\" or \".\" itself is a comment",
                        "odd-name");
        if (line.name.size() < shortestNearName || known_.has(line.name))
            return;
        const KazStringColl near = nearNames(line.name, known_.all());
        if (const KazString hint = kazDidYouMean(line.name.c_str(), near))
            tell(Finding::Warning, line,
                 "nothing known reads " + quoted(line.name) + hint.getValue(), "near-name");
    }

    const Configuration& configuration_;
    const KnownNames known_;
    std::vector<Finding> findings_;
    int cutFile_ = -1, cutLine_ = 0;
};

} // namespace

std::vector<Finding> findingsOf(const Configuration& configuration) {
    return Search(configuration).run();
}
