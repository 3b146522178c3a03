// SPDX-License-Identifier: Apache-2.0
// The texts of moxcopy, of a run that cannot copy all of its files.
#include "programs/moxcopy.h"

#include <cctype>
#include <fstream>

using namespace moxcopy_test;

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
        tree.write("old/small/stale", "old");
        fs::create_directory_symlink("brewery", tree.path("plant/link"));
        tree.mkdir("plant/many");
        for (int i = 0; i < 101; ++i)
            fs::create_symlink("nowhere", tree.path("plant/many/" + std::to_string(i)));
    }

    /// Compiles a source text and configures the message file.
    void useTexts(const std::string& source) {
        const std::string file = tree.path("texts");
        auto result =
            moxkit::run({"moxmsg", "-source", tree.write("source", source), "-output", file});
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
            {"-s", "link", "-target", "new"},
            {"-s", "small", "-target", "old", "-Force"},
            {"-s", "many", "-target", "new"},
        };
        std::string text;
        for (std::vector<std::string> line : lines) {
            line.insert(line.begin(), {program, "-p", "plant"});
            const auto result = runTool(line);
            EXPECT_EQ(result.signal, 0);
            text += result.out + result.err + "status " + std::to_string(result.status) + "\n";
        }
        text += runTool({program, "-p", "", "-s", "brewery"}).err;
        text += runTool({program, "-p", "nowhere", "-s", "brewery", "-target", "new"}).err;
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
    for (int number = 200; number <= 233; ++number) {
        const bool needsMishap =
            number == 212 || number == 213 || number == 219 || number == 221 || number == 230;
        EXPECT_EQ(said.count(std::to_string(number)), needsMishap ? 0u : 1u) << number;
    }

    fs::create_directories(tree.path("suite/bin/W32NTX86"));
    fs::rename(tree.path("texts"), tree.path("suite/bin/W32NTX86/msg_file"));
    configure("");
    EXPECT_EQ(everything(), marked) << "without configuration, from the usual place";
    useTexts("204 only this: %zu\n");
    std::string expected = english;
    for (std::size_t at; (at = expected.find("1 file in")) != std::string::npos;)
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
    kit::Random random;
    for (const char* magic : {"", "MZAK"}) {
        configure(tree.write("texts", magic + random.text(9000, "\1\2\3%sd$*\xff")));
        EXPECT_EQ(copy({"-target", "new"}).status, 1) << "two files cannot be copied";
        EXPECT_EQ(names("new/brewery").size(), names("plant/brewery").size() - 2);
        fs::remove_all(tree.path("new"));
    }
    ASSERT_EQ(mkfifo(tree.path("fifo").c_str(), 0600), 0);
    for (const char* name : {"missing", "fifo", "plant"}) {
        configure(tree.path(name));
        const auto result =
            runTool({program, "-p", "plant", "-s", "small", "-target", std::string("n/") + name});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "Cannot read the message file '" + tree.path(name) + "'\n");
    }
}
