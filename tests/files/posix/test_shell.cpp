// SPDX-License-Identifier: Apache-2.0
// Child processes of a POSIX shell: what it makes of words, and what they see of the tool. That
// nobody waits for what they leave behind is tested with KazCommand, which runs them alike.
#include "tools/files/process.h"

#include "kit/random.h"
#include "testkit/director.h"
#include "testkit/env.h"
#include "testkit/temp_tree.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

using Words = std::vector<std::string>;

/// Nothing where a quote stays open.
std::optional<Words> split(const std::string& line) {
    char** argv = nullptr;
    const int argc = str_to_argv(line.c_str(), &argv);
    const std::unique_ptr<char*, decltype(&std::free)> owned(argv, &std::free);
    return argc >= 0 ? std::optional(Words(argv, argv + argc)) : std::nullopt;
}

std::string join(const Words& words) {
    std::vector<const char*> argv;
    for (const std::string& word : words)
        argv.push_back(word.c_str());
    return argv_to_str(static_cast<int>(argv.size()), argv.data()).getValue();
}

/// Nothing that a line begins with is taken for the shell's own: there is no such
/// command.
TEST(Words, TheFirstOneIsACommand) {
    for (const char* first : {"if", "while", "for", "case", "until", "{", "!", "time", "function",
                              "select", "coproc", "do", "then", "esac", "[[", "A=b", "=", "a+=b"}) {
        const Words words = {first};
        EXPECT_EQ(split(join(words)), words);
        const std::string line = "PATH=/nowhere; " + join(words) + " 2>/dev/null";
        for (const std::string shell : {"sh", "bash"}) {
            KazString output;
            EXPECT_EQ(shell_cmd_output(("/bin/" + shell + " -c " + join({line})).c_str(), output),
                      127)
                << shell << ": " << line;
        }
    }
    EXPECT_EQ(join({"a", "if", "b=c"}), "a if b=c");
}

TEST(Words, ReadAsAShellDoes) {
    kit::Random random;
    std::string script;
    std::string expected;
    for (int round = 0; round < 200; ++round) {
        Words words;
        for (int n = random.between(1, 4); n > 0; --n)
            words.push_back(random.text(6, "ab \t\"'\\$`*?;|&<>(){}[]~#!=%\x01\xE9"));
        script += "printf '<%s>' " + join(words) + "\n";
        for (const std::string& word : words)
            expected += "<" + word + ">";
    }
    for (int round = 0; round < 400; ++round) { // and whatever people write
        const std::string line = random.text(12, "ab \t'\"\\") + " .";
        if (const auto words = split(line)) {
            script += "printf '<%s>' " + line + "\n";
            for (const std::string& word : *words)
                expected += "<" + word + ">";
        }
    }
    KazString output;
    ASSERT_EQ(shell_cmd_output(script.c_str(), output), 0);
    EXPECT_EQ(output.getValue(), expected);
    // What stands at the end, and what a shell would replace or take for a line of its own.
    EXPECT_EQ(split("a\\\nb \\\n \"c\\\nd\" \"\\$\\`\"\na\\"), (Words{"ab", "cd", "$`", "a\\"}));
}

TEST(Shell, TellsTheSignal) {
    KazString output;
    int signal = -1;
    EXPECT_EQ(shell_cmd_output("printf 'a\\0b'; kill -9 $$", output, &signal), -1);
    EXPECT_EQ(signal, SIGKILL);
    EXPECT_EQ(std::string(output.getValue(), 3), std::string("a\0b", 3));
}

TEST(Shell, SeesWhatTheToolHasWrittenAndShowsAllOfALine) {
    const moxkit::TempTree tree;
    const moxkit::RecordingDirector director;
    std::FILE* stream = std::fopen(tree.path("file").c_str(), "wb");
    ASSERT_NE(stream, nullptr);
    std::fwrite("a\0b\nend", 1, 7, stream); // as yet in the stream's buffer
    EXPECT_EQ(shell_cmd(("cat " + tree.path("file")).c_str()), 0);
    std::fclose(stream);
    EXPECT_EQ(director.messages, (std::vector<std::string>{"a b", "end"}));
}

TEST(Shell, ACommandIsNoOptionOfTheInterpreter) {
    const moxkit::TempTree tree;
    for (const char* name : {"-c", "+x", "--"}) {
        const std::string program = tree.write(name, "#!/bin/sh\necho \"called $1\"\n");
        std::filesystem::permissions(program, std::filesystem::perms::owner_all);
        const moxkit::ScopedEnv path("PATH", (tree.path() + ":" + std::getenv("PATH")).c_str());
        KazString output;
        EXPECT_EQ(shell_cmd_output((std::string(name) + " so").c_str(), output), 0) << name;
        EXPECT_STREQ(output.getValue(), "called so\n");
    }
}

/// Keeps what a file held when the command's name was shown.
class NameWatcher : public moxkit::RecordingDirector {
public:
    explicit NameWatcher(const moxkit::TempTree& watched) : tree(watched) {}

    std::string before;

protected:
    int doTtyStart(const char* command) override {
        before = tree.read("file");
        return RecordingDirector::doTtyStart(command);
    }

private:
    const moxkit::TempTree& tree;
};

/// Also the streams of C++ that keep text of their own: it stands above the command's name.
TEST(Shell, SeesWhatTheStandardStreamsHold) {
    const moxkit::TempTree tree;
    NameWatcher director(tree);
    std::filebuf file;
    ASSERT_NE(file.open(tree.path("file"), std::ios::out), nullptr);
    for (std::ostream* stream : {&std::cout, &std::cerr, &std::clog}) {
        std::streambuf* const usual = stream->rdbuf(&file);
        *stream << 'x';
        KazString output;
        shell_cmd_output(("cat " + tree.path("file")).c_str(), output);
        *stream << 'y';
        shell_cmd("true");
        stream->rdbuf(usual);
        const std::string text = output.getValue();
        EXPECT_TRUE(!text.empty() && text.back() == 'x') << text;
        EXPECT_EQ(director.before, text + 'y');
        file.sputc('\n');
    }
}

TEST(Shell, ACommandStartsWithoutBlockedOrIgnoredSignals) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    ::pthread_sigmask(SIG_BLOCK, &all, &before);
    const auto usual = std::signal(SIGPIPE, SIG_IGN);
    KazString output;
    shell_cmd_output("grep -E '^Sig(Blk|Ign)' /proc/self/status", output);
    std::signal(SIGPIPE, usual);
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    EXPECT_GE(output.find("SigBlk:\t0000000000000000\n"), 0) << output.getValue();
    const int ignored = output.find("SigIgn:\t");
    ASSERT_GE(ignored, 0);
    const auto signals = std::strtoull(output.getValue() + ignored + 8, nullptr, 16);
    EXPECT_EQ(signals >> (SIGPIPE - 1) & 1, 0u);
}

} // namespace
