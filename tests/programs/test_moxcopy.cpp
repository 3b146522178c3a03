#include "kit/process.h"
#include "kit/random.h"
#include "kit/temp_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sys/mount.h>
#include <sys/stat.h>

namespace fs = std::filesystem;

namespace {

/// Relative names of everything below a directory: the text of a file, "/" for a
/// directory, "@" for anything else.
std::map<std::string, std::string> contents(const kit::TempTree& tree, const std::string& top) {
    std::map<std::string, std::string> result;
    if (!fs::exists(tree.path(top)))
        return result;
    for (const auto& entry : fs::recursive_directory_iterator(tree.path(top))) {
        const std::string name = fs::relative(entry.path(), tree.path(top)).string();
        if (entry.is_symlink() || entry.is_other())
            result[name] = "@";
        else
            result[name] = entry.is_directory() ? "/" : tree.read(top + "/" + name);
    }
    return result;
}

std::size_t filesIn(const std::map<std::string, std::string>& names) {
    return static_cast<std::size_t>(std::count_if(
        names.begin(), names.end(), [](const auto& entry) { return entry.second != "/"; }));
}

/// A suite installed on its own, with a project in which to work.
class MoxCopy : public testing::Test {
protected:
    MoxCopy() {
        const fs::path bin = kit::binDirectory();
        fs::create_directories(tree.path("suite/bin"));
        fs::copy_file(bin / "libmoxtools.so.1", tree.path("suite/bin/libmoxtools.so.1"));
        fs::copy_file(bin / "moxcopy", tree.path("suite/bin/moxcopy"));
        tree.write("suite/ToolInfo", "ToolInfo = site\ntmp_dir=" + tree.path("copies") + "\n");
        tree.write("suite/site", "tmp_dir=/nowhere\n");
    }

    void makeSystem() {
        kit::Random random(kit::seed());
        for (const char* name : {"mashing.dgm", "tank control.dgm", "a_b.dgm", "a_bc.dgm",
                                 "filestore/mashing.1", "filestore/mashing.2", ".sys_file_mode",
                                 "100%s%n.txt", "~", "C:x", "line\nfeed", "\xff\xfe", "deep/a/b/c"})
            tree.write(std::string("plant/brewery/") + name,
                       std::string(name) + random.text(5000, "abc\n"));
        tree.mkdir("plant/brewery/empty/inside");
        tree.write("plant/brewery/zero", "");
        fs::permissions(tree.path("plant/brewery/zero"), fs::perms(0640));
    }

    kit::Result copy(std::vector<std::string> arguments, kit::RunOptions options = {}) {
        arguments.insert(arguments.begin(), {tree.path("suite/bin/moxcopy"), "-projdir", "plant",
                                             "-system", "brewery"});
        return runTool(arguments, options);
    }

    kit::Result runTool(const std::vector<std::string>& arguments, kit::RunOptions options = {}) {
        options.cwd = tree.path();
        options.env["ToolInfo"] = kit::unset;
        options.env["TOOLINFO"] = kit::unset;
        options.env["HOME"] = tree.path();
        return kit::run(arguments, options);
    }

    std::set<std::string> names(const std::string& directory) {
        std::set<std::string> result;
        for (const auto& [name, text] : contents(tree, directory))
            if (text != "/")
                result.insert(name);
        return result;
    }

    /// Nothing but the copy is left in the directory that received it.
    bool onlyCopyIn(const std::string& directory) {
        for (const auto& entry : fs::directory_iterator(tree.path(directory)))
            if (entry.path().filename() != "brewery")
                return false;
        return true;
    }

    kit::TempTree tree;
};

} // namespace

TEST_F(MoxCopy, CopiesTheWholeSystemUnderTheConfiguredDirectory) {
    makeSystem();
    auto result = copy({});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "");
    const auto source = contents(tree, "plant/brewery");
    EXPECT_EQ(contents(tree, "copies/brewery"), source);
    EXPECT_TRUE(onlyCopyIn("copies"));
    EXPECT_EQ(fs::status(tree.path("copies/brewery/zero")).permissions(), fs::perms(0640));

    std::size_t bytes = 0;
    for (const auto& [name, text] : source)
        bytes += text == "/" ? 0 : text.size();
    const std::string summary = "\n" + std::to_string(filesIn(source)) + " files, " +
                                std::to_string(bytes) + " bytes copied to '" +
                                tree.path("copies/brewery") + "' in ";
    EXPECT_NE(result.out.find(summary), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("Copying brewery ...................."), std::string::npos);
}

TEST_F(MoxCopy, CommentsOrKeepsQuiet) {
    makeSystem();
    auto result = copy({"-verbose", "-target", "t"});
    EXPECT_EQ(result.status, 0);
    for (const std::string& name : names("plant/brewery"))
        EXPECT_NE(result.out.find("Copied '" + name + "'."), std::string::npos) << name;
    EXPECT_NE(result.out.find("[  0%] Copied"), std::string::npos);
    result = copy({"-Quiet", "-target", "u", "-verbose"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out + result.err, "");
    EXPECT_EQ(contents(tree, "u/brewery"), contents(tree, "plant/brewery"));
}

TEST_F(MoxCopy, RestrictsItselfToDiagramsAndPattern) {
    makeSystem();
    EXPECT_EQ(copy({"-target", "d", "mashing", "tank control"}).status, 0);
    EXPECT_EQ(names("d/brewery"),
              (std::set<std::string>{"filestore/mashing.1", "filestore/mashing.2", "mashing.dgm",
                                     "tank control.dgm"}));
    EXPECT_FALSE(tree.exists("d/brewery/empty"));
    EXPECT_EQ(copy({"-target", "r", "a b"}).status, 0);
    EXPECT_EQ(names("r/brewery"), std::set<std::string>{"a_b.dgm"})
        << "cleaned by the naming rules";
    EXPECT_EQ(copy({"-target", "f", "-filter", "mash*"}).status, 0);
    EXPECT_EQ(names("f/brewery"),
              (std::set<std::string>{"filestore/mashing.1", "filestore/mashing.2", "mashing.dgm"}));
    EXPECT_EQ(copy({"-target", "b", "-filter", "*.?", "mashing"}).status, 0);
    EXPECT_EQ(names("b/brewery"),
              (std::set<std::string>{"filestore/mashing.1", "filestore/mashing.2"}));

    auto result = copy({"-target", "m", "mashing", "sparging"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("Not copied: 'sparging' (the system has no such diagram)"),
              std::string::npos);
    EXPECT_TRUE(tree.exists("m/brewery/mashing.dgm"));
    result = copy({"-target", "n", "-filter", "nothing*"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "There is nothing to copy\n");
    EXPECT_FALSE(tree.exists("n"));
}

TEST_F(MoxCopy, SaysWhatIsWrongAndHowItIsUsed) {
    makeSystem();
    const std::map<std::vector<std::string>, std::string> lines = {
        {{"-system", "brewery"}, "option -projdir DIR is missing"},
        {{"-p", "plant", "-s"}, "option -system needs a value"},
        {{"-p", "plant", "-s", "s", "-batch"}, "option -batch is not for this program"},
        {{"-p", "-zzz", "-s", "s", "-100%s"}, "unknown option -100%s"},
        {{"-p", "a", "-p", "-zzz"}, "unknown option -zzz"},
        {{"-p", "", "-s", "s"}, "The project directory is empty"},
        {{"-p", "plant", "-s", "s", "-filter", "a/b"},
         "The filter is for file names, not for paths"},
    };
    for (const auto& [line, message] : lines) {
        std::vector<std::string> arguments = line;
        arguments.insert(arguments.begin(), tree.path("suite/bin/moxcopy"));
        auto result = runTool(arguments);
        EXPECT_EQ(result.status, 2) << message;
        const std::string usage = "moxcopy: " + message +
                                  "\nusage: moxcopy -projdir DIR -system NAME [-target DIR] "
                                  "[-filter PATTERN] [-verbose] [-Force] [-Quiet] "
                                  "[diagram ...]\n";
        EXPECT_NE(("\n" + result.err).find("\n" + usage), std::string::npos) << result.err;
        EXPECT_NE(result.err.find("\n  -projdir DIR     project directory (-p)\n"),
                  std::string::npos);
        EXPECT_EQ(result.out, "");
    }
}

TEST_F(MoxCopy, RefusesNamesThatCannotBe) {
    makeSystem();
    const std::map<std::vector<std::string>, std::string> lines = {
        {{"-s", "brewery", "mash*"}, "Invalid Diagram name: mash*\n"},
        {{"-s", "brewery", "ok", ""}, "Empty diagram name\n"},
        {{"-s", ""}, "Empty system name\n"},
        {{"-s", ".."}, "Invalid system name: ..\n"},
        {{"-s", "brewery/deep"}, "Invalid system name: brewery/deep\n"},
        {{"-s", "/etc"}, "Invalid system name: /etc\n"},
    };
    for (const auto& [line, message] : lines) {
        std::vector<std::string> arguments = line;
        arguments.insert(arguments.begin(), {tree.path("suite/bin/moxcopy"), "-p", "plant"});
        auto result = runTool(arguments);
        EXPECT_EQ(result.status, 2) << message;
        EXPECT_EQ(result.err, message);
    }
    auto result = runTool({tree.path("suite/bin/moxcopy"), "-p", "plant", "-s", "winery"});
    EXPECT_EQ(result.status, 1);
    EXPECT_FALSE(tree.exists("plant/winery")) << "asking for a system must not create it";
    EXPECT_FALSE(tree.exists("copies"));
}

TEST_F(MoxCopy, NeedsItsConfiguration) {
    makeSystem();
    tree.write("suite/ToolInfo", "ToolInfo = site\n");
    tree.write("suite/site", "% no directory for copies\n");
    auto result = copy({});
    EXPECT_EQ(result.status, 2);
    EXPECT_TRUE(result.err.starts_with(
        "moxcopy: There is no -target, and the ToolInfo variable tmp_dir is not set\nusage: "));
    fs::remove(tree.path("suite/ToolInfo"));
    result = copy({});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "ToolInfo environment variable is not set\n");
    EXPECT_EQ(copy({"-target", "t"}).status, 0) << "nothing is asked of it then";
}

TEST_F(MoxCopy, RefusesTargetsAndSourcesInOneAnother) {
    makeSystem();
    fs::create_directory_symlink(tree.path("plant/brewery/deep"), tree.path("link"));
    const auto before = contents(tree, "plant");
    for (const char* target : {"plant", "plant/brewery", "plant/brewery/deep/new", "link",
                               "./plant/", "plant/brewery/../../plant"}) {
        auto result = copy({"-Force", "-target", target});
        EXPECT_EQ(result.status, 2) << target;
        EXPECT_NE(result.err.find("one would lie in the other"), std::string::npos) << result.err;
    }
    // The destination would be the directory that holds the project.
    tree.write("brewery/plant/brewery/x", "x");
    auto result = runTool({tree.path("suite/bin/moxcopy"), "-p", "brewery/plant", "-s", "brewery",
                           "-Force", "-target", "."});
    EXPECT_EQ(result.status, 2) << result.err;
    EXPECT_EQ(contents(tree, "plant"), before);
    EXPECT_EQ(copy({"-target", "Z:\\nowhere"}).status, 1) << "there are no drives here";
}

TEST_F(MoxCopy, AsksBeforeItOverwrites) {
    makeSystem();
    tree.write("copies/brewery/mashing.dgm", "old");
    tree.write("copies/brewery/own/notes.txt", "kept");
    const auto before = contents(tree, "copies");
    for (const char* answer : {"", "\n", "no\n", "what\n"}) {
        kit::RunOptions options;
        options.input = answer;
        auto result = copy({}, options);
        EXPECT_EQ(result.status, 1) << answer;
        EXPECT_NE(result.out.find("moxcopy: Overwrite the copy '" + tree.path("copies/brewery") +
                                  "'? Yes/[No] "),
                  std::string::npos)
            << result.out;
        EXPECT_EQ(contents(tree, "copies"), before);
    }
    kit::RunOptions noInput;
    noInput.closeStdin = true;
    EXPECT_EQ(copy({}, noInput).status, 1);
    EXPECT_EQ(contents(tree, "copies"), before);

    auto expected = contents(tree, "plant/brewery");
    expected["own"] = "/";
    expected["own/notes.txt"] = "kept";
    kit::RunOptions yes;
    yes.input = "y\n";
    EXPECT_EQ(copy({}, yes).status, 0);
    EXPECT_EQ(contents(tree, "copies/brewery"), expected);
    tree.write("plant/brewery/mashing.dgm", "newer");
    expected["mashing.dgm"] = "newer";
    EXPECT_EQ(copy({"-Force"}).status, 0);
    EXPECT_EQ(contents(tree, "copies/brewery"), expected);

    tree.write("file/brewery", "in the way");
    EXPECT_EQ(copy({"-Force", "-target", "file"}).status, 1);
    EXPECT_EQ(tree.read("file/brewery"), "in the way");
}

/// What cannot be copied is told with its path; the rest arrives.
TEST_F(MoxCopy, ListsWhatItCouldNotCopy) {
    makeSystem();
    const auto good = names("plant/brewery");
    fs::create_symlink("nowhere", tree.path("plant/brewery/dangling"));
    fs::create_directory_symlink(tree.path(), tree.path("plant/brewery/upward"));
    ASSERT_EQ(mkfifo(tree.path("plant/brewery/pipe").c_str(), 0600), 0);
    tree.write("plant/brewery/back\\slash", "x");
    auto result = copy({});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(names("copies/brewery"), good);
    for (const char* name : {"dangling", "upward", "pipe", "back\\slash"})
        EXPECT_NE(result.err.find("Not copied: '" + tree.path("plant/brewery/") + name + "' ("),
                  std::string::npos)
            << name;
    EXPECT_TRUE(result.err.ends_with("\n4 failures\n")) << result.err;
    EXPECT_TRUE(onlyCopyIn("copies"));

    // Inside an earlier copy, a link in place of a directory is not followed.
    fs::remove_all(tree.path("copies/brewery/deep"));
    tree.mkdir("outside");
    fs::create_directory_symlink(tree.path("outside"), tree.path("copies/brewery/deep"));
    tree.write("plant/brewery/zero", "no longer empty");
    result = copy({"-Force"});
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(fs::is_empty(tree.path("outside")));
    EXPECT_EQ(tree.read("copies/brewery/zero"), "no longer empty");
}

TEST_F(MoxCopy, UnreadableDirectoriesFailAndTheirNeighboursDoNot) {
    makeSystem();
    const std::string deep = tree.path("plant/brewery/deep");
    std::vector<std::string> command = {tree.path("suite/bin/moxcopy"), "-p", "plant", "-s",
                                        "brewery"};
    if (geteuid() == 0) { // Nothing is unreadable to the super user.
        command.insert(command.begin(), {"/usr/bin/setpriv", "--reuid=65534", "--clear-groups"});
        fs::permissions(tree.path(), fs::perms::all);
    }
    fs::permissions(deep, fs::perms::none);
    auto result = runTool(command);
    fs::permissions(deep, fs::perms::owner_all);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "Not copied: '" + deep + "' (the directory cannot be read)\n1 failure\n");
    EXPECT_TRUE(tree.exists("copies/brewery/filestore/mashing.1"));
    EXPECT_FALSE(tree.exists("copies/brewery/deep"));
}

TEST_F(MoxCopy, InterruptRemovesWhatThisRunHasMade) {
    for (int i = 0; i < 400; ++i)
        tree.write("plant/brewery/f" + std::to_string(1000 + i), std::string(200'000, 'x'));
    kit::RunOptions options;
    options.signal = SIGINT;
    options.signalAfter = "Copied";
    auto result = copy({"-verbose", "-target", "new/parents"}, options);
    EXPECT_EQ(result.status, 9) << result.out.substr(result.out.size() - 200);
    EXPECT_EQ(result.err, "Cancelled, nothing was copied\n");
    EXPECT_FALSE(tree.exists("new"));

    tree.write("copies/brewery/f1000", "old");
    const auto before = contents(tree, "copies");
    EXPECT_EQ(copy({"-verbose", "-Force"}, options).status, 9);
    EXPECT_EQ(contents(tree, "copies"), before);
}

TEST_F(MoxCopy, FullDiskLeavesWhatWasThere) {
    const std::string disk = tree.mkdir("disk");
    if (mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=256k") != 0)
        GTEST_SKIP() << "no small file system can be made here";
    tree.write("disk/brewery/f1", "old");
    for (int i = 0; i < 20; ++i)
        tree.write("plant/brewery/f" + std::to_string(i), std::string(30'000, 'x'));
    auto result = copy({"-Force", "-target", "disk"});
    const auto after = contents(tree, "disk");
    auto fresh = copy({"-target", "disk/new"});
    const auto afterFresh = contents(tree, "disk");
    umount(disk.c_str());
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("The disk is full, nothing was copied\n"), std::string::npos);
    EXPECT_EQ(after, (std::map<std::string, std::string>{{"brewery", "/"}, {"brewery/f1", "old"}}));
    EXPECT_EQ(fresh.status, 1);
    EXPECT_EQ(afterFresh, after);
}

TEST_F(MoxCopy, NeedsNoStandardOutput) {
    makeSystem();
    const auto source = contents(tree, "plant/brewery");
    kit::RunOptions closed;
    closed.closeStdout = closed.closeStdin = true;
    EXPECT_EQ(copy({"-verbose"}, closed).status, 0);
    EXPECT_EQ(contents(tree, "copies/brewery"), source);
    kit::RunOptions full;
    full.stdoutFile = "/dev/full";
    EXPECT_EQ(copy({"-verbose", "-target", "t"}, full).status, 0);
    EXPECT_EQ(contents(tree, "t/brewery"), source);
    EXPECT_EQ(contents(tree, "plant/brewery"), source);
}

TEST_F(MoxCopy, TakesTenThousandDiagrams) {
    std::vector<std::string> diagrams;
    for (int i = 0; i < 10'000; ++i)
        diagrams.push_back("d" + std::to_string(i));
    for (int i = 0; i < 300; ++i)
        tree.write("plant/brewery/d" + std::to_string(i * 7) + ".dgm", "x");
    kit::RunOptions options;
    options.timeoutSeconds = 20;
    auto result = copy(diagrams, options);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(names("copies/brewery").size(), 300u);
    EXPECT_TRUE(result.err.ends_with("\n9700 failures\n"));
}

namespace {

/// Runs that between them say nearly everything, each with and without texts.
class MoxCopyTexts : public MoxCopy {
protected:
    MoxCopyTexts() {
        makeSystem();
        fs::create_symlink("nowhere", tree.path("plant/brewery/dangling"));
        tree.write("plant/brewery/back\\slash", "x");
        tree.write("plant/small/one", "1");
        tree.write("file/brewery", "in the way");
        tree.mkdir("old/brewery");
    }

    /// Compiles a source text and configures the message file.
    void useTexts(const std::string& source) {
        const std::string file = tree.path("texts");
        auto result =
            kit::run({"moxmsg", "-source", tree.write("source", source), "-output", file});
        ASSERT_EQ(result.status, 0) << result.err;
        configure(file);
    }

    void configure(const std::string& file) {
        tree.write("suite/ToolInfo", "msg_file=" + file + "\n");
    }

    /// What the runs print and how they end; the time is all that may change.
    std::string everything() {
        const std::vector<std::vector<std::string>> lines = {
            {"-s", "brewery", "-target", "new", "-verbose"},
            {"-s", "small", "-target", "new"},
            {"-s", "brewery", "-target", "new", "mashing", "sparging", "-Force"},
            {"-s", "brewery", "-target", "new", "-filter", "none*"},
            {"-s", "brewery", "-target", "file"},
            {"-s", "brewery", "-target", "file/brewery"},
            {"-s", "brewery", "-target", "old"},
            {"-s", "brewery", "-target", "plant"},
            {"-s", "winery", "-target", "new"},
            {"-s", "..", "-target", "new"},
            {"-s", "brewery"},
            {"-s", "brewery", "-target", "new", "-filter", "a/b"},
        };
        std::string text;
        for (std::vector<std::string> line : lines) {
            line.insert(line.begin(), {tree.path("suite/bin/moxcopy"), "-p", "plant"});
            const auto result = runTool(line);
            EXPECT_EQ(result.signal, 0);
            text += result.out + result.err + "status " + std::to_string(result.status) + "\n";
        }
        text += runTool({tree.path("suite/bin/moxcopy"), "-p", "", "-s", "brewery"}).err;
        fs::remove_all(tree.path("new"));
        for (std::size_t end = 0; (end = text.find(" seconds.", end + 1)) != std::string::npos;) {
            const std::size_t begin = text.rfind(' ', end - 1);
            text.erase(begin, end - begin);
            end = begin;
        }
        return text;
    }

    /// Gives every text of the sample source another form.
    template <typename Change>
    std::string sampleTexts(Change change) {
        std::ifstream file(fs::path(EXAMPLES) / "project/messages.txt");
        std::string source;
        for (std::string line; std::getline(file, line);)
            if (std::isdigit(static_cast<unsigned char>(line[0])))
                source +=
                    line.substr(0, 3) + " " + change(line.substr(0, 3), line.substr(4)) + "\n";
        return source;
    }
};

} // namespace

TEST_F(MoxCopyTexts, ComeFromTheMessageFile) {
    configure("");
    const std::string english = everything();
    useTexts(sampleTexts([](auto&&, const std::string& text) { return text; }));
    EXPECT_EQ(everything(), english) << "the sample texts are the built-in ones";

    useTexts(sampleTexts([](const std::string& number, const std::string& text) {
        return "@" + number + "@" + text;
    }));
    const std::string marked = everything();
    std::set<std::string> said;
    std::string unmarked = marked;
    for (std::size_t at; (at = unmarked.find('@')) != std::string::npos;) {
        said.insert(unmarked.substr(at + 1, 3));
        unmarked.erase(at, 5);
    }
    EXPECT_EQ(unmarked, english);
    for (int number = 200; number <= 227; ++number) {
        const bool needsMishap = number == 212 || number == 213 || number == 219 || number == 221;
        EXPECT_EQ(said.count(std::to_string(number)), needsMishap ? 0u : 1u) << number;
    }

    fs::create_directories(tree.path("suite/bin/W32NTX86"));
    fs::rename(tree.path("texts"), tree.path("suite/bin/W32NTX86/msg_file"));
    configure("");
    EXPECT_EQ(everything(), marked) << "without configuration, from the usual place";
    useTexts("204 only this: %zu\n");
    std::string expected = english;
    for (std::size_t at; (at = expected.find("1 file ")) != std::string::npos;)
        expected.replace(at, 6, "only this: 1");
    for (std::size_t at; (at = expected.find("1 file,")) != std::string::npos;)
        expected.replace(at, 6, "only this: 1");
    EXPECT_EQ(everything(), expected);
}

TEST_F(MoxCopyTexts, CanDoNoHarm) {
    configure("");
    const std::string english = everything();
    const std::vector<std::string> hostile = {
        "%n%n%n%n", "%s%s%s%s%s%s", "%9$s", "%1$s%1$d", "%s%1$s",     "%zu%s%zu",
        "%*.*f",    "%s %c",        "%",    "%l",       "%99999999s", "%.999999999zu"};
    for (std::size_t turn = 0; turn < 3; ++turn) {
        auto next = [&, i = turn * 5]() mutable { return hostile[i++ % hostile.size()]; };
        useTexts(sampleTexts([&](auto&&, auto&&) { return next(); }));
        EXPECT_EQ(everything(), english) << turn;
        useTexts(sampleTexts([&](auto&&, const std::string& text) { return text + next(); }));
        EXPECT_EQ(everything(), english) << turn;
    }
    kit::Random random(kit::seed());
    for (const char* magic : {"", "MZAK"}) {
        configure(tree.write("texts", magic + random.text(9000, "\1\2\3%sd$*\xff")));
        EXPECT_EQ(copy({"-target", "new"}).status, 1) << "two files cannot be copied";
        EXPECT_EQ(names("new/brewery").size(), names("plant/brewery").size() - 2);
        fs::remove_all(tree.path("new"));
    }
    ASSERT_EQ(mkfifo(tree.path("fifo").c_str(), 0600), 0);
    for (const char* name : {"missing", "fifo", "plant"}) {
        configure(tree.path(name));
        const auto result = runTool({tree.path("suite/bin/moxcopy"), "-p", "plant", "-s", "small",
                                     "-target", std::string("n/") + name});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "Cannot read the message file '" + tree.path(name) + "'\n");
    }
}
