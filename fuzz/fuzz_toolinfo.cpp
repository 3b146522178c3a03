// SPDX-License-Identifier: Apache-2.0
// ToolInfo files that name one another, and what a tool then does with the
// variables: the library and a plain model of its rules answer alike, also about
// where each definition stands, which one is in force, and why others are not. Lines
// in which nothing is found wrong mean what anybody would read there.
#include "fuzz/directory.h"
#include "fuzz/harness.h"
#include "kit/table.h"
#include "programs/common/findings.h"
#include "programs/moxinfo/origin.h"
#include "testkit/director.h"
#include "testkit/env.h"
#include "tools/app/KazMasterContext.h"
#include "tools/config/detail/ToolInfoState.h"
#include "tools/config/toolinfo.h"
#include "tools/config/toolinfo_scan.h"
#include "tools/files/kazpath.h"
#include "tools/files/tifiles.h"
#include "tools/platform/host.h"

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

using Answer = std::optional<std::string>;

Answer answer(const char* text) {
    return text != nullptr ? Answer(text) : std::nullopt;
}

/// The files' directory, which is the user's home too.
using fuzz::directory;

std::string fileName(int number) {
    return "f" + std::to_string(number);
}

// ------------------------------------------------------------------- the model

std::string trimmed(std::string text, const std::string& front, const std::string& back) {
    while (!text.empty() && back.find(text.back()) != back.npos)
        text.pop_back();
    return text.erase(0, std::min(text.find_first_not_of(front), text.size()));
}

/// A line as it is shown to whoever looks for definitions.
struct Seen {
    std::string file;
    int line = 0;
    int kind = 0;
    Answer name;
    std::string value;

    bool operator==(const Seen&) const = default;
};

/// One file cut into lines: at line ends, and after each 5120 characters.
std::vector<Seen> linesOf(const std::string& text, const std::string& file) {
    std::vector<Seen> lines;
    int number = 0;
    for (std::string line : kit::lines(text)) {
        ++number;
        do {
            const std::string piece = line.substr(0, 5120);
            line.erase(0, piece.size());
            const bool hasNul = piece.find('\0') != piece.npos;
            lines.push_back({file, number,
                             (line.empty() ? 0 : KazLineIsCut) | (hasNul ? KazLineHasNul : 0),
                             std::nullopt, piece.c_str()});
        } while (!line.empty());
    }
    return lines;
}

/// What a line defines, or why it does not; its kind, name and value.
Seen meaningOf(Seen line) {
    const std::string text = trimmed(line.value, "", "\n\r \t");
    const std::size_t equals = text.find('=');
    const std::string name = trimmed(text.substr(0, equals), " ", " ");
    if (!line.value.empty() && (line.value[0] == '%' || line.value[0] == '.')) {
        line.kind |= KazLineComment;
    } else if (text.empty()) {
        line.kind |= KazLineBlank;
    } else if (equals == text.npos) {
        line.kind |= KazLineNoEquals;
    } else {
        line.value = trimmed(text.substr(equals + 1), " ", " ");
        line.kind |= name.empty() ? KazLineNoName : KazLineDefinition;
        if (!name.empty())
            line.name = name;
    }
    return line;
}

/// The rules of the files, step by step and without a thought of speed.
class Model {
public:
    struct Definition {
        std::string value, file;
        int line = 0;
    };
    std::map<std::string, Definition> table;
    std::map<std::string, std::string> assigned;
    std::vector<std::string> chain;
    std::vector<Seen> seen; ///< what a look at the lines of the chain shows
    bool overwrite = true;

    int defineLine(const std::string& line) {
        const Seen meaning = meaningOf({"", 0, 0, std::nullopt, line});
        if (!meaning.name)
            return -1;
        bind(*meaning.name, {meaning.value, "", 0});
        return 0;
    }

    std::vector<Seen> readFile(const std::string& text, const std::string& file) {
        std::vector<Seen> lines = linesOf(text, file);
        for (Seen& line : lines) {
            line = meaningOf(line);
            if (line.name)
                bind(*line.name, {line.value, file, line.line});
        }
        return lines;
    }

    void readOneOfChain(const std::string& name) {
        const std::vector<Seen> lines = readFile(*contents(name), name);
        seen.insert(seen.end(), lines.begin(), lines.end());
        chain.push_back(name);
    }

    /// Why the chain does not go on; a kind of visit, or -1 when it does.
    int endAt(const std::string& name) const {
        if (std::any_of(chain.begin(), chain.end(), [&name](const std::string& read) {
                std::error_code error;
                return fs::equivalent(hostPath(read), hostPath(name), error);
            }))
            return KazChainCycle;
        if (chain.size() == 10)
            return KazChainTooLong;
        return contents(name) ? -1 : KazChainUnreadable;
    }

    /// All files, from the one of this name on.
    void readChain(const std::string& first) {
        readOneOfChain(first);
        bind("TI_locale", {std::setlocale(LC_CTYPE, nullptr), ""});
        overwrite = false;
        while (const Answer value = valueOf("ToolInfo")) {
            const std::string name = resolved(*value);
            const Definition link = table.at("ToolInfo");
            if (const int end = endAt(name); end >= 0) {
                seen.push_back({link.file, link.line, end, "ToolInfo", name});
                break;
            }
            table.erase("ToolInfo");
            readOneOfChain(name);
        }
        overwrite = true;
        std::string path;
        for (const std::string& name : chain)
            path += (path.empty() ? "" : " ") + name;
        bind("ToolInfo", {first, ""});
        bind("ToolInfoPath", {path, ""});
    }

    int assign(const std::string& name, const std::string& value) {
        if (!overwrite && (table.count(name) != 0 || assigned.count(name) != 0))
            return -1;
        assigned[name] = value;
        return 0;
    }

    Answer valueOf(const std::string& name) const {
        const bool isAssigned = assigned.count(name) != 0;
        if (!isAssigned && table.count(name) == 0)
            return std::nullopt;
        const std::string& value = isAssigned ? assigned.at(name) : table.at(name).value;
        return value.empty() ? std::nullopt : Answer(value);
    }

    std::pair<KazVariableSource, std::string> sourceOf(const std::string& name) const {
        if (std::getenv(environmentName(name).c_str()) != nullptr)
            return {KazEnvironment, ""};
        if (assigned.count(name) != 0)
            return {KazRunTime, ""};
        if (table.count(name) == 0)
            return {KazUndefined, ""};
        const std::string& file = table.at(name).file;
        return {file.empty() ? KazDefined : KazFile, file};
    }

    std::vector<std::string> names() const {
        std::set<std::string> all;
        for (const auto& entry : table)
            all.insert(entry.first);
        for (const auto& entry : assigned)
            all.insert(entry.first);
        return {all.begin(), all.end()};
    }

    static std::string environmentName(const std::string& name) {
        std::string result = "KAZ_" + name;
        for (char& c : result)
            c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
        return result;
    }

    static std::string resolved(const std::string& value) {
        return kazComposePath(TI_myRootDir(), _TI_hm(value.c_str())).getValue();
    }

    std::vector<Seen> definitionsOf(const std::string& name) const {
        std::vector<Seen> result;
        for (const Seen& line : seen)
            if ((line.kind & KazLineKindMask) == KazLineDefinition && line.name == name)
                result.push_back(line);
        return result;
    }

    static Answer contents(const std::string& name) {
        std::error_code error;
        if (!fs::is_regular_file(hostPath(name), error))
            return std::nullopt;
        std::ifstream in(hostPath(name));
        return std::string(std::istreambuf_iterator<char>(in), {});
    }

    static std::string hostPath(const std::string& name) {
        return kazHostPath(name.c_str()).getValue();
    }

private:
    void bind(const std::string& name, const Definition& definition) {
        if (overwrite || table.count(name) == 0)
            table[name] = definition;
    }
};

// ------------------------------------------------------------------- the input

constexpr int fileCount = 13;
constexpr std::array names = {"a",      "b",         "projdir",      "Name", "name",
                              "x y",    "z\xe4",     "ToolInfo",     "HOME", "",
                              "empty=", "TI_locale", "ToolInfoPath", "%"};

std::string takeName(fuzz::Input& input) {
    return input.byte() % 8 != 0 ? input.pick(names) : input.cText(12);
}

/// A name of a file in some spelling, of the next one mostly.
std::string takeLink(fuzz::Input& input, int from) {
    const int to = input.byte() % 4 != 0 ? from + 1 : input.between(0, fileCount);
    const std::string name = fileName(to);
    const moxkit::TempTree& tree = directory();
    const std::string spellings[] = {tree.path(name), tree.path("./" + name), "~\\" + name,
                                     tree.path(), name};
    const auto how = input.between<std::size_t>(0, 10);
    if (how < std::size(spellings))
        return spellings[how];
    if (how == 5)
        return input.textOf("~/\\.f12 ", 12);
    return how == 6 ? "" : "~/" + name;
}

std::string takeLine(fuzz::Input& input, int file) {
    switch (input.between(0, 7)) {
    case 0:
        return input.text(40);
    case 1: // around the limit of a line, the rest being a line of its own
        return takeName(input) + "=" + std::string(input.between<std::size_t>(5100, 5125), 'v') +
               takeName(input) + "=rest";
    case 2:
        return input.textOf("ab =\t.%\r~", 16);
    case 3:
    case 4:
        return "ToolInfo=" + takeLink(input, file);
    default:
        return takeName(input) + input.textOf("= \t", 3) + "=" + input.text(12);
    }
}

std::string takeFile(fuzz::Input& input, int number) {
    std::string text;
    for (int lines = input.between(0, 15); lines > 0; --lines)
        text += takeLine(input, number) + (input.byte() % 4 != 0 ? "\n" : "\r\n");
    if (input.flag())
        text += takeLine(input, number);
    return text;
}

void writeFile(int number, const std::string& text) {
    directory().write(fileName(number), text);
}

/// Everything is as if no file had been read yet.
void startAfresh() {
    kaz::detail::ToolInfoState::instance() = {};
    KazMasterContext::getInstance()->setSlot(KazMasterContext::toolsSlot, nullptr);
    for (const auto& entry : fs::directory_iterator(directory().path()))
        fs::remove(entry.path());
    for (const char* variable : {"TOOLINFO", "KAZ_PROJDIR", "KAZ_A"})
        moxkit::setVariable(variable, nullptr);
    moxkit::setVariable("HOME", directory().path().c_str());
}

// ----------------------------------------------------------------- the questions

/// Of this input.
fuzz::Failures* failures = nullptr;

/// What @p question answers, in some cases only when memory is there again.
Answer asked(const char* (*question)(const char*), const std::string& name) {
    return failures->ask([&] { return answer(question(name.c_str())); });
}

void compare(const Model& model, const std::string& name) {
    const char* const question = name.c_str();
    const Answer expected = model.valueOf(name);
    FUZZ_CHECK(asked(TI_Vcont, name) == expected);
    const auto orEnvironment = [&expected](const std::string& variable) {
        const char* value = std::getenv(variable.c_str());
        return value != nullptr ? Answer(value) : expected;
    };
    FUZZ_CHECK(asked(TI_SameEnvVcont, name) == orEnvironment(name));
    FUZZ_CHECK(asked(TI_EnvVcont, name) == orEnvironment(Model::environmentName(name)));
    KazString file = "before";
    const KazVariableSource source = TI_EnvVsource(question, &file);
    FUZZ_CHECK(std::pair(source, std::string(file.getValue())) == model.sourceOf(name));
    FUZZ_CHECK(TI_EnvVsource(question, nullptr) == source);
}

void see(const KazVariableLine* line, void* data) {
    static_cast<std::vector<Seen>*>(data)->push_back(
        {line->file, line->line, line->kind, answer(line->name), line->value});
}

/// No memory for a stream is no file: to the model that is one of the failures.
void needed(bool isDone) {
    if (!isDone)
        throw KazMemoryException();
}

/// The lines of the chain, which have not changed since they were read.
void compareLines(const Model& model) {
    std::vector<Seen> seen;
    failures->step([&] {
        seen.clear();
        needed(TI_Vscan(see, &seen) == (model.chain.empty() ? -1 : 0));
    });
    FUZZ_CHECK(seen == model.seen);
    FUZZ_CHECK(TI_Vscan(nullptr, &seen) == -1 && TI_Vscan_file(nullptr, see, &seen) == -1);
}

std::string onOneLine(std::string text) {
    for (char& c : text)
        c = c == '\n' || c == '\r' ? ' ' : c;
    return text;
}

std::string placeOf(const std::string& file, int line) {
    return Model::hostPath(file) + ":" + std::to_string(line) + ": ";
}

/// Is that why this definition is not in force, as one looks for it by hand?
void checkReason(const Model& model, const Seen& line, const std::string& reason) {
    std::set<std::string> reasons;
    const bool isLibrarys = model.table.at(*line.name).file.empty();
    if (isLibrarys)
        reasons.insert("the library sets it");
    else if (std::getenv(Model::environmentName(*line.name).c_str()) != nullptr)
        reasons.insert("the environment sets it");
    const auto place = [&](const Seen& each) {
        return std::find(model.chain.begin(), model.chain.end(), each.file);
    };
    for (const Seen& other : model.definitionsOf(*line.name))
        if (other.file == line.file)
            reasons.insert("line " + std::to_string(other.line) +
                           (line.file == model.chain[0] ? " replaces it" : " defines it"));
        else if (place(other) < place(line) && !isLibrarys)
            reasons.insert("an earlier file defines it");
    FUZZ_CHECK(reasons.count(reason) == 1);
}

/// What stands below a variable: one source is in force, and it is the right one.
void compareOrigin(const Model& model, const Configuration& configuration,
                   const std::string& name) {
    const char* const value = TI_EnvVcont(name.c_str());
    const std::string shown = onOneLine(value != nullptr ? value : "");
    const std::vector<std::string> lines = originOf(configuration, name);
    FUZZ_CHECK(lines.size() >= 3 && lines[0] == name + "=" + shown);
    FUZZ_CHECK(std::count_if(lines.begin(), lines.end(), [](const std::string& line) {
                   return line.starts_with("* ");
               }) == (name.starts_with("* ") ? 2 : 1));
    const Model::Definition& definition = model.table.at(name);
    const std::string variable = Model::environmentName(name);
    std::string inForce = "* library: " + shown;
    if (std::getenv(variable.c_str()) != nullptr)
        inForce = "* environment " + variable + ": " + shown;
    else if (!definition.file.empty())
        inForce = "* " + placeOf(definition.file, definition.line) + shown;
    FUZZ_CHECK(std::find(lines.begin() + 1, lines.end(), inForce) != lines.end());
    const std::vector<Seen> definitions = model.definitionsOf(name);
    FUZZ_CHECK(lines.size() >= definitions.size() + 3);
    auto line = lines.end() - static_cast<std::ptrdiff_t>(definitions.size());
    for (const Seen& each : definitions) {
        const std::string text = placeOf(each.file, each.line) + onOneLine(each.value);
        const bool isInForce = line->starts_with("* ");
        FUZZ_CHECK(line->substr(2, text.size()) == text);
        FUZZ_CHECK(isInForce == (line->size() == text.size() + 2));
        if (!isInForce)
            checkReason(model, each, line->substr(text.size() + 4, line->size() - text.size() - 5));
        ++line;
    }
}

/// Is a definition what it says, for somebody who knows no more of these files than that
/// they hold `name = value` and comments? False for what is no definition.
bool isDefinedAsWritten(const Model& model, const std::string& file, const std::string& line) {
    constexpr const char* white = " \t\r";
    const std::size_t equals = line.find('=');
    const std::string name = trimmed(line.substr(0, equals), white, white);
    if (equals == line.npos || name.empty())
        return false;
    const std::string value = trimmed(line.substr(equals + 1), white, white);
    if (name != "ToolInfo")
        return answer(TI_Vcont(name.c_str())) == Answer(value);
    const auto next = std::find(model.chain.begin(), model.chain.end(), file) + 1;
    return next != model.chain.end() && *next == Model::resolved(value);
}

void compareFindings(const Model& model, const Configuration& configuration) {
    std::set<std::pair<std::string, int>> places;
    for (const Finding& finding : findingsOf(configuration))
        if (finding.file >= 0)
            places.emplace(configuration.fileName(finding.file), finding.line);
    for (const std::string& file : model.chain) {
        int number = 0;
        for (const std::string& line : kit::lines(*Model::contents(file))) {
            ++number;
            if (trimmed(line, " \t\r", " \t\r").empty() || line[0] == '%' || line[0] == '.')
                continue;
            FUZZ_CHECK(places.count({Model::hostPath(file), number}) != 0 ||
                       isDefinedAsWritten(model, file, line));
        }
    }
}

/// What people are shown of the files.
void compareExplanations(const Model& model) {
    const Configuration configuration;
    for (const auto& entry : model.table)
        compareOrigin(model, configuration, entry.first);
    FUZZ_CHECK(originOf(configuration, "no such name").empty());
    compareFindings(model, configuration);
}

/// Of the variables that override, those that a step may set.
void compareOverrides() {
    std::map<std::string, std::string> walked, expected;
    failures->step([&walked] {
        walked.clear();
        TI_EnvVwalk([](const char* variable, const char* value,
                       void* all) { (*static_cast<decltype(&walked)>(all))[variable] = value; },
                    &walked);
    });
    for (const char* variable : {"KAZ_PROJDIR", "KAZ_A"})
        if (const char* value = std::getenv(variable))
            expected[variable] = value;
    std::erase_if(walked, [](const auto& each) {
        FUZZ_CHECK(each.first.starts_with("KAZ_"));
        return each.first != "KAZ_PROJDIR" && each.first != "KAZ_A";
    });
    FUZZ_CHECK(walked == expected);
}

void compareAll(const Model& model) {
    compareOverrides();
    std::vector<std::string> walked;
    failures->step([&walked] {
        walked.clear();
        TI_Vwalk([](const char* name,
                    void* data) { static_cast<std::vector<std::string>*>(data)->push_back(name); },
                 &walked);
    });
    FUZZ_CHECK(walked == model.names());
    for (const std::string& name : walked)
        compare(model, name);
    for (std::size_t i = 0; i <= model.chain.size(); ++i)
        FUZZ_CHECK(TI_Vfile(static_cast<int>(i)).getValue() ==
                   (i < model.chain.size() ? model.chain[i] : std::string()));
}

/// The first lookup, which reads the files or says why it cannot.
void start(Model& model, const std::string& value) {
    moxkit::RecordingDirector director;
    const std::string first = Model::resolved(value);
    const bool exists = Model::contents(first).has_value();
    std::string name(kaz::host::pathLimit(), '\0');
    failures->step([] { TI_Vinit(); }, [&director] { director.fatals.clear(); });
    FUZZ_CHECK(TI_Vinit() == 0 && TI_Vcont(nullptr) == nullptr);
    FUZZ_CHECK(director.fatals.size() == (exists ? 0 : 1) && director.errors.empty());
    FUZZ_CHECK(exists || director.fatals[0].find(": " + value + ",\n") != value.npos);
    FUZZ_CHECK(TI_Name(name.data()) == 0 && name.c_str() == first);
    if (exists)
        model.readChain(first);
    director.fatals.clear();
    compareLines(model);
    if (exists)
        compareExplanations(model);
    FUZZ_CHECK(director.fatals.empty());
}

void step(Model& model, fuzz::Input& input) {
    const std::string name = takeName(input);
    const Model before = model;
    const auto unchanged = [&before] { compareAll(before); };
    const int operation = input.between(0, 6);
    if (operation == 0) {
        const int number = input.between(0, fileCount);
        const bool flag = input.flag(), overwrites = model.overwrite;
        writeFile(number, takeFile(input, number));
        const std::string path = directory().path(fileName(number));
        model.overwrite = flag;
        model.readFile(*Model::contents(path), directory().native(fileName(number)));
        model.overwrite = overwrites;
        failures->step([&] { needed(TI_V_user_file(path.c_str(), flag) == 0); }, unchanged);
        FUZZ_CHECK(TI_V_user_file(directory().path().c_str(), flag) == -1);
    } else if (operation == 1) {
        const std::string line = takeLine(input, 0).c_str();
        const int result = failures->ask([&] { return TI_Var(line.c_str()); }, unchanged);
        FUZZ_CHECK(result == model.defineLine(line));
    } else if (operation == 2) {
        const std::string value = input.cText(8);
        const std::string expanded = _TI_hm(value.c_str());
        const int result =
            failures->ask([&] { return TI_Vasg(name.c_str(), value.c_str()); }, unchanged);
        FUZZ_CHECK(result == model.assign(name, expanded));
    } else if (operation == 3) {
        const bool flag = input.flag();
        FUZZ_CHECK(TI_V_set_overwrite(flag) == model.overwrite);
        model.overwrite = flag;
    } else if (operation == 4) {
        moxkit::setVariable(input.flag() ? "KAZ_PROJDIR" : "KAZ_A",
                            input.flag() ? "" : "environment");
    } else {
        compare(model, name);
    }
}

} // namespace

void fuzz::harness(Input& input) {
    fuzz::Failures ofInput(input);
    failures = &ofInput;
    startAfresh();
    const int files = input.between(0, fileCount);
    for (int i = 0; i < files; ++i)
        writeFile(i, takeFile(input, i));
    const int how = input.byte();
    std::string first = how % 8 != 0 ? "~/f0" : takeLink(input, 0);
    if (first.empty())
        first = "none"; // not every host has empty variables
    moxkit::setVariable("ToolInfo", first.c_str());
    if (how % 4 == 1)
        moxkit::setVariable("KAZ_A", "environment");
    Model model;
    if (how >= 224) { // a tool says where to go on before anything is read
        const std::string line = "ToolInfo=" + takeLink(input, 0);
        FUZZ_CHECK(TI_Var(line.c_str()) == model.defineLine(line));
    }
    start(model, first);
    for (int steps = input.between(0, 60); steps > 0; --steps)
        step(model, input);
    compareAll(model);
    // What is left is one file, as large as it may be.
    writeFile(fileCount, input.rest());
    const std::string path = directory().path(fileName(fileCount));
    const std::vector<Seen> lines =
        model.readFile(*Model::contents(path), directory().native(fileName(fileCount)));
    FUZZ_CHECK(TI_V_user_file(path.c_str(), model.overwrite) == 0);
    compareAll(model);
    std::vector<Seen> seen;
    FUZZ_CHECK(TI_Vscan_file(path.c_str(), see, &seen) == 0 && seen == lines);
}
