// SPDX-License-Identifier: Apache-2.0
// All topics are looked at, whatever is wrong with one of them: a director that returns
// from fatal errors listens meanwhile, and nothing is said before the end. What is said is
// one line each, for people and scripts alike.

#include "commands.h"
#include "common/complaint.h"
#include "common/findings.h"
#include "common/printable.h"
#include "common/trace_options.h"
#include "moxtool/damage.h"
#include "moxtool/verdicts.h"
#include "tools/moxtools.h"

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace {

constexpr KazCommandLine::Option options[] = {traceTopics, traceFile};

constexpr KazCommandLine
    commandLine({"moxtool doctor", MOX_VERSION,
                 "Says of everything that the suite needs whether it is as it should be.", options,
                 std::size(options), "", 0, 0});

/// What the user has said. The library gives the children of a tool another one, by the
/// name "default", before the tool begins.
const std::string languageAtStart = [] {
    const char* const value = std::getenv("LANG");
    return std::string(value != nullptr && std::string_view(value) != "default" ? value : "");
}();

/// Hears what the library has to say, answers nothing, and survives fatal errors.
class Listener : public KazIODirector {
public:
    Listener() { install(); }

protected:
    void doPrintMsg(const char*, va_list) override {}
    void doPrintError(const char*, va_list) override {}
    void doFatalError(const char*, va_list) override {}
    Reply doConfirm(const KazString&, const KazString&, DialogType, Reply reply) override {
        return reply;
    }
    bool doGetUserInput(KazString&, const KazString&, const KazString&, bool) override {
        return false;
    }
};

bool isSet(const char* text) {
    return text != nullptr && *text != '\0';
}

/// A path as the user knows it.
std::string shown(const KazString& native) {
    const KazString host = kazHostPath(native);
    return (host.isEmpty() ? native : host).getValue();
}

/// A root is above itself.
KazString directoryAbove(KazString path) {
    while (path.getLength() > 1 && path[path.getLength() - 1] == '\\')
        path = path.subStringBefore(path.getLength() - 1);
    return kazPathDirPart(path);
}

bool mayWriteTo(const KazString& directory) {
    constexpr int all = 7;
    return TI_isDirectory(directory) && TI_access(directory, all) == 0;
}

class Examination {
public:
    /// Looks at everything.
    void run() {
        // Before anything is asked: the first lookup of a variable may end in a fatal error.
        const Listener listener;
        const Damage damage;
        lookAtLibrary(damage);
        lookAtRoot();
        lookAtPrograms(damage);
        lookAtToolInfo();
        lookAtVariables();
        lookAtMessages();
        lookAtTemporary();
        lookAtHome();
        lookAtTerminal();
        lookAtLocale();
        lookAtEnvironment();
    }

    /// Says what was found. False when something fails, or cannot be said.
    bool report() const { return verdicts_.report(); }

    /// Opens the first line of a configuration file that was complained about.
    void open() const {
        const auto first = std::find_if(findings_.begin(), findings_.end(),
                                        [](const Finding& finding) { return finding.file >= 0; });
        if (first != findings_.end())
            openComplaint("moxtool", configuration_->fileName(first->file), first->line);
    }

private:
    void begin(const char* topic) { verdicts_.begin(topic); }
    void warn(const std::string& text) { verdicts_.warn(text); }
    void fail(const std::string& text) { verdicts_.fail(text); }
    void confirm(const std::string& text) { verdicts_.confirm(text); }

    void lookAtLibrary(const Damage& damage) {
        begin("library");
        const KazString directory = kazMoxBinDir();
        if (directory.isEmpty())
            fail("nobody knows where its file is");
        if (const std::string problem = damage.problem(); !problem.empty())
            warn(problem);
        for (const std::string& part : damage.parts(false))
            warn(part + " is not as it was installed");
        confirm("version " MOX_VERSION " in " + shown(directory));
    }

    void lookAtRoot() {
        begin("root");
        const KazString root = kazMoxRootDir();
        if (root.isEmpty())
            fail("nobody knows where the suite is installed");
        else if (!TI_isDirectory(root))
            fail(shown(root) + " is no directory");
        confirm(shown(root));
    }

    void lookAtPrograms(const Damage& damage) {
        begin("programs");
        const KazString directory = kazMoxBinDir();
        std::string all;
        for (const std::string program : suitePrograms) {
            const KazString file = directory + "\\" + program.c_str();
            if (!TI_isFile(file) && !TI_isFile(file + ".exe"))
                warn(program + " is missing in " + shown(directory));
            all += program + " ";
        }
        for (const std::string& part : damage.parts(true))
            if (TI_isFile(kazMoxRootDir() + "\\" + part.c_str()))
                warn(part + " is not as it was installed");
        confirm(all + "in " + shown(directory));
    }

    void lookAtToolInfo() {
        begin("toolinfo");
        TI_Vinit();
        configuration_ = std::make_unique<Configuration>();
        findings_ = findingsOf(*configuration_);
        std::string files;
        for (int i = 0; const KazString file = TI_Vfile(i); ++i)
            files.append(files.empty() ? "" : ", ").append(shown(file));
        if (files.empty())
            fail("there is no ToolInfo file" + whereItIsSought());
        // Only the ends of the chain belong here; what else was found has topics of its own.
        for (const Finding& finding : findings_)
            if (isOfChain(finding))
                finding.severity == Finding::Error ? fail(textOf(finding)) : warn(textOf(finding));
        confirm(files);
    }

    static std::string whereItIsSought() {
        // In the order in which the library asks them.
        for (const char* variable : {"ToolInfo", "TOOLINFO"})
            if (const char* const name = std::getenv(variable); name != nullptr)
                return std::string(": ") + variable + " names " + name;
        return ", neither in " + shown(kazMoxRootDir()) + " nor in the home directory";
    }

    static bool isOfChain(const Finding& finding) {
        return std::string_view(finding.code).starts_with("chain-");
    }

    std::string textOf(const Finding& finding) const {
        const std::string place = finding.file < 0 ? std::string()
                                                   : configuration_->fileName(finding.file) + ":" +
                                                         std::to_string(finding.line) + ": ";
        return place + finding.text + " [" + finding.code + "]";
    }

    void lookAtVariables() {
        begin("variables");
        for (const Finding& finding : findings_)
            if (finding.file >= 0 && !isOfChain(finding))
                warn(textOf(finding));
        const std::size_t count = configuration_->names().size();
        confirm(std::to_string(count) + (count == 1 ? " name is" : " names are") + " defined");
    }

    void lookAtMessages() {
        begin("messages");
        const char* const configured = TI_Vcont("msg_file");
        const KazString file = isSet(configured)
                                   ? KazString(configured)
                                   : kazComposePath(kazMoxRootDir(), "bin\\W32NTX86\\msg_file");
        if (!isSet(configured) && !TI_exists(file))
            return confirm("the programs' own texts, as there is no " + shown(file));
        // The mark of a message file, with which it begins.
        char start[4] = {};
        errno = 0;
        std::FILE* const stream = TI_isFile(file) ? TI_fopen(file, "rb") : nullptr;
        if (stream == nullptr)
            return fail(shown(file) + " cannot be read" +
                        (errno != 0 ? ": " + std::generic_category().message(errno) : ""));
        const std::size_t got = std::fread(start, 1, sizeof start, stream);
        std::fclose(stream);
        if (std::string_view(start, got) != "MZAK")
            fail(shown(file) + " is no message file");
        confirm(shown(file));
    }

    /// A directory that is missing is made where it is needed, if that may be.
    void lookAtTemporary() {
        begin("temporary");
        const char* const configured = TI_Vcont("tmp_dir");
        std::error_code error;
        const KazString directory =
            isSet(configured)
                ? kazFullPath(configured)
                : kazNativePath(std::filesystem::temp_directory_path(error).string().c_str());
        KazString existing = directory;
        for (KazString above; !existing.isEmpty() && !TI_exists(existing); existing = above)
            if ((above = directoryAbove(existing)) == existing)
                break;
        if (!mayWriteTo(existing))
            fail(shown(directory) + " cannot be written to");
        confirm(shown(directory) + (existing == directory ? "" : ", which is not there yet"));
    }

    void lookAtHome() {
        begin("home");
        std::string home = _TI_hm("~");
        if (home.size() > 1 && home.ends_with('\\'))
            home.pop_back();
        const char* const named = std::getenv("HOME");
        // What cannot be expanded comes back as it was.
        if (home == "~")
            warn("this user has no home directory");
        else if (isSet(named) && !TI_isDirectory(kazNativePath(named)))
            warn("HOME is " + std::string(named) + ", which is no directory; it is " +
                 shown(home.c_str()));
        else if (!mayWriteTo(home.c_str()))
            warn(shown(home.c_str()) + " cannot be written to: nothing is remembered");
        confirm(shown(home.c_str()));
    }

    void lookAtTerminal() {
        begin("terminal");
        const char* const type = std::getenv("TERM");
        const auto kindOf = [](std::FILE* stream) {
            return TI_isTerminal(stream) ? "a terminal" : "no terminal";
        };
        confirm(std::string("input is ") + kindOf(stdin) + ", output " + kindOf(stdout) +
                ", errors " + kindOf(stderr) + "; TERM is " + (isSet(type) ? type : "not set"));
    }

    void lookAtLocale() {
        begin("locale");
        std::string wanted = languageAtStart;
        // The stronger one last, as it replaces the others.
        for (const char* variable : {"LC_CTYPE", "LC_ALL"})
            if (const char* const name = std::getenv(variable); isSet(name))
                wanted = name;
        // A copy: the next call may write where the pointer leads.
        const std::string before = std::setlocale(LC_CTYPE, nullptr);
        if (!wanted.empty() && std::setlocale(LC_CTYPE, wanted.c_str()) == nullptr)
            warn(wanted + " is not installed here: texts count as ASCII");
        std::setlocale(LC_CTYPE, before.c_str());
        confirm(wanted.empty() ? "none is set: texts count as ASCII" : wanted);
    }

    void lookAtEnvironment() {
        begin("environment");
        for (const Finding& finding : findings_)
            if (finding.file < 0 && !isOfChain(finding))
                warn(textOf(finding));
        const char* const first = std::getenv("ToolInfo");
        const char* const second = std::getenv("TOOLINFO");
        // Where case does not count, the two are one.
        if (isSet(first) && isSet(second) && std::getenv("toolINFO") == nullptr)
            warn("both ToolInfo and TOOLINFO are set: the second one is not looked at");
        confirm(isSet(first) || isSet(second) ? "names the first ToolInfo file"
                                              : "overrides nothing");
    }

    Verdicts verdicts_;
    std::unique_ptr<Configuration> configuration_;
    std::vector<Finding> findings_;
};

} // namespace

int doctorCommand(int argc, char** argv) {
    if (const int status = commandLine.parse(argc, argv); status != KazCommandLine::run)
        return status;
    Examination examination;
    examination.run();
    const bool isSound = examination.report();
    examination.open();
    return isSound ? 0 : 1;
}
