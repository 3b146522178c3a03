// SPDX-License-Identifier: Apache-2.0
// Editors: which one is asked for, and a program in an editor's place that writes down how
// it was called.
#include "tools/services/sourcenav.h"

#include "kit/await.h"
#include "kit/host.h"
#include "kit/table.h"
#include "kit/valgrind.h"
#include "testkit/director.h"
#include "testkit/env.h"
#include "testkit/process.h"
#include "testkit/temp_tree.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

using Words = std::vector<std::string>;

struct Command {
    int result;
    Words words;
};

Command commandOf(const char* editor, const char* file, int line = 3, int column = 5) {
    KazStringColl words;
    words.add("before");
    Command command{kaz_source_command(editor, file, line, column, words), {}};
    for (int i = 0; i < words.getSize(); ++i)
        command.words.emplace_back(words.getAt(i).getValue());
    return command;
}

/// An absolute name in the host's own spelling.
std::string hostName(const std::string& name) {
    return kit::hasDrives ? kit::currentDrive() + "\\d\\" + name : "/d/" + name;
}

class SourceEditor : public testing::Test {
protected:
    /// The configuration is read once, and there has to be one.
    static void SetUpTestSuite() {
        static const moxkit::TempTree tree;
        moxkit::setVariable("ToolInfo", tree.write("ToolInfo", "% nothing\n").c_str());
    }

    moxkit::ScopedEnv configured{"KAZ_SOURCE_EDITOR", nullptr};
    moxkit::ScopedEnv visual{"VISUAL", nullptr};
    moxkit::ScopedEnv editor{"EDITOR", nullptr};
};

TEST_F(SourceEditor, EachPresetNamesFileAndLine) {
    int count = 0;
    std::string last;
    for (const kaz_source_preset* row = kaz_source_presets(); row->name != nullptr;
         ++row, ++count) {
        SCOPED_TRACE(row->name);
        EXPECT_LT(last, row->name);
        last = row->name;
        const std::string file = hostName("a b$(x).c");
        const Command command = commandOf(row->name, file.c_str(), 1234, 56);
        ASSERT_GE(command.result, 0);
        std::string all;
        for (const std::string& word : command.words)
            all += word + "\n";
        EXPECT_NE(all.find(file), std::string::npos) << all;
        EXPECT_NE(all.find("1234"), std::string::npos) << all;
        EXPECT_EQ(all.find("${"), std::string::npos) << all;
        EXPECT_EQ(command.words[0].find('@'), std::string::npos);
        EXPECT_EQ(command.result == 1, std::string(row->command).starts_with("@terminal "));
        EXPECT_EQ(command.words, commandOf(row->command, file.c_str(), 1234, 56).words);
    }
    EXPECT_EQ(count, 20);
}

/// What becomes of a template is the model's to show.
TEST_F(SourceEditor, NamesOfFiles) {
    EXPECT_EQ(commandOf("e", "").result, -1);
    EXPECT_EQ(commandOf("e", nullptr).result, -1);
    if (!kit::hasDrives) {
        EXPECT_EQ(commandOf("e", "C:\\x").result, -1);
        EXPECT_EQ(commandOf("e", "\\d\\x.c").words, (Words{"e", "/d/x.c"}));
        EXPECT_EQ(commandOf("e ${dir}|", "/x").words, (Words{"e", "|", "/x"}));
    }
    // A name is no option: it is made absolute.
    EXPECT_NE(commandOf("e", "-x").words.at(1)[0], '-');
}

TEST_F(SourceEditor, WhoIsAskedFirst) {
    const std::string file = hostName("x.c");
    const auto first = [&] {
        const Command command = commandOf(nullptr, file.c_str());
        return command.words.empty() ? std::string() : command.words[0];
    };
    EXPECT_EQ(commandOf(nullptr, file.c_str()).result, -1);
    const moxkit::ScopedEnv last("EDITOR", "emacs -nw");
    EXPECT_EQ(first(), "emacs");
    {
        const moxkit::ScopedEnv unknown("VISUAL", "my-editor --fast");
        EXPECT_EQ(first(), "emacs") << "nobody knows how to tell it a line";
        const moxkit::ScopedEnv broken("EDITOR", "emacs 'x");
        EXPECT_EQ(commandOf(nullptr, file.c_str()).result, -1);
    }
    const moxkit::ScopedEnv known("VISUAL", "/opt/bin/code --wait");
    EXPECT_EQ(commandOf(nullptr, file.c_str()).words,
              (Words{"/opt/bin/code", "--goto", file + ":3:5"}));
    const moxkit::ScopedEnv own("KAZ_SOURCE_EDITOR", "my-editor +${line}");
    EXPECT_EQ(commandOf(nullptr, file.c_str()).words, (Words{"my-editor", "+3", file}));
}

/// What a program in an editor's place was called with.
class Recorder {
public:
    explicit Recorder(const std::string& name)
        : path_("PATH",
                (tree_.path() + (kit::hasDrives ? ";" : ":") + std::getenv("PATH")).c_str()),
          record_("RECORD_ARGUMENTS", tree_.path("record").c_str()) {
        const std::string extension = kit::hasDrives ? ".exe" : "";
        kit::placeProgram("service_peer", tree_.path());
        std::filesystem::rename(tree_.path("service_peer" + extension),
                                tree_.path(name + extension));
    }

    Words words() const {
        Words words = kit::lines(kit::awaitText(tree_, "record"));
        if (!words.empty())
            words.erase(words.begin()); // the program itself
        std::filesystem::remove(tree_.path("record"));
        return words;
    }

private:
    moxkit::TempTree tree_;
    moxkit::ScopedEnv path_;
    moxkit::ScopedEnv record_;
};

TEST_F(SourceEditor, AnEditorGetsTheLine) {
    const moxkit::RecordingDirector director;
    const moxkit::TempTree tree;
    const Recorder code("code");
    const moxkit::ScopedEnv own("VISUAL", "code");
    for (const char* name : {"plain.c", "a b.c", "$(touch x)`y`'&;.c", "-x", "%PATH%^.c"}) {
        tree.write(name, "text");
        EXPECT_TRUE(kazShowSource(tree.path(name).c_str(), 12, 3)) << name;
        const Words words = code.words();
        ASSERT_EQ(words.size(), 2u) << name;
        EXPECT_EQ(words[0], "--goto");
        EXPECT_TRUE(words[1].ends_with(std::string(name) + ":12:3")) << words[1];
    }
    const moxkit::ScopedEnv terminal("KAZ_SOURCE_EDITOR", "@terminal code +${line} ${file}");
    EXPECT_TRUE(kazShowSource(tree.path("plain.c").c_str()));
    EXPECT_EQ(code.words().at(0), "+1"); // it has ended: nothing is waited for here
    EXPECT_TRUE(director.errors.empty());
}

TEST_F(SourceEditor, WhatCannotBeShownIsReported) {
    kit::leaveOutUnderValgrind("its child cannot say that nothing was started");
    const moxkit::RecordingDirector director;
    const moxkit::TempTree tree;
    const std::string file = tree.write("x.c", "");
    const std::string strange = "no-\x1b[31m";
    EXPECT_FALSE(kazShowSource(strange.c_str()));
    EXPECT_FALSE(kazShowSource(tree.path().c_str()));
    EXPECT_FALSE(kazShowSource(nullptr));
    EXPECT_FALSE(kazShowSource(file.c_str()));
    {
        const moxkit::ScopedEnv own("KAZ_SOURCE_EDITOR", "\x1b'");
        EXPECT_FALSE(kazShowSource(file.c_str()));
    }
    const moxkit::ScopedEnv own("KAZ_SOURCE_EDITOR", "no-such-editor");
    EXPECT_FALSE(kazShowSource(file.c_str()));
    ASSERT_EQ(director.errors.size(), 6u);
    EXPECT_EQ(director.errors[0], "There is no file \"no-\\x1B[31m\".");
    EXPECT_EQ(director.errors[2], "There is no file \"\".");
    EXPECT_EQ(director.errors[3],
              "No source editor is configured; set the variable source_editor.");
    EXPECT_EQ(director.errors[4], "The source editor \"\\x1B'\" cannot be read.");
    EXPECT_TRUE(director.errors[5].starts_with("\"no-such-editor\" could not be started: "));
}

} // namespace
