// SPDX-License-Identifier: Apache-2.0
#include "kit/host.h"
#include "kit/random.h"
#include "kit/table.h"
#include "testkit/process.h"
#include "testkit/temp_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

using Words = std::vector<std::string>;

moxkit::Result traced(const Words& arguments, const std::string& environment) {
    Words argv{"trace_tool"};
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    moxkit::RunOptions options;
    options.env["KAZ_TRACE"] = environment;
    return moxkit::run(argv, options);
}

std::string without(std::string text, char c) {
    std::erase(text, c);
    return text;
}

/// What one run of the tool has to write.
struct Model {
    std::set<std::string> topics;
    bool hasFile = false;
    std::string error, file;
    int evaluations = 0;

    void trace(const std::string& topic, const std::string& text) {
        if (topics.count(topic) != 0)
            (hasFile ? file : error) += "trace " + topic + ": " + text + "\n";
    }
};

TEST(Trace, WritesWhatIsAskedForAndEvaluatesNothingElse) {
    const moxkit::TempTree tree;
    kit::Random random;
    const Words names{"a", "b", "ab", "outside", "A"};
    const auto anyName = [&] { return names[static_cast<std::size_t>(random.below(5))]; };
    for (int run = 0; run < 40; ++run) {
        Model model;
        std::string environment;
        for (int n = random.below(4); n > 0; --n) {
            const std::string name = anyName();
            environment += (random.oneIn(3) ? ",," : ",") + name;
            model.topics.insert(name);
        }
        environment.erase(0, static_cast<std::size_t>(random.below(2)));
        model.trace("outside", "before main");

        Words arguments;
        for (int n = random.below(3); n > 0; --n) {
            const std::string name = anyName();
            arguments.insert(arguments.end(), {"-trace", name});
            model.topics.insert(name);
        }
        if (!model.topics.empty() && random.oneIn(2)) {
            model.hasFile = true;
            tree.write("file", "old\n");
            arguments.insert(arguments.end(), {"-trace_file", tree.path("file")});
        }
        for (int n = random.below(6); n > 0; --n) {
            const std::string name = anyName();
            const std::string text = random.text(random.oneIn(4) ? 3000 : 20, "x %sd\\.");
            arguments.push_back(name + "=" + text);
            model.trace(name, text);
            model.evaluations += static_cast<int>(model.topics.count(name));
        }
        if (model.hasFile)
            model.trace("outside", "after main");

        const moxkit::Result result = traced(arguments, environment);
        SCOPED_TRACE(environment + moxkit::seedText());
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, model.error);
        EXPECT_EQ(result.out, std::to_string(model.evaluations) + " evaluations\n");
        if (model.hasFile) {
            EXPECT_EQ(without(tree.read("file"), '\r'), model.file);
        }
    }
}

TEST(Trace, AFileAloneMeansAllTopics) {
    const moxkit::TempTree tree;
    const Words arguments{"-trace_file", tree.path("file"), "any=x", "config=y"};
    EXPECT_EQ(traced(arguments, "").err, "");
    EXPECT_EQ(tree.read("file"),
              "trace arguments: 1 -trace_file: option -trace_file\ntrace arguments: 2 " +
                  tree.path("file") +
                  ": value 1 of -trace_file\ntrace arguments: 3 any=x: argument 1\n"
                  "trace arguments: 4 config=y: argument 2\n"
                  "trace any: x\ntrace config: y\ntrace outside: after main\n");
}

TEST(Trace, AFileThatCannotBeWrittenIsSaidOnce) {
    const moxkit::TempTree tree;
    std::vector<std::pair<std::string, std::string>> cases{
        {tree.mkdir("directory"), "Is a directory"},
        {tree.path("none/file"), "No such file or directory"},
        {"", "No such file or directory"}};
    if (!kit::fullDevice().empty())
        cases.emplace_back(kit::fullDevice(), "No space left on device");
    for (const auto& [file, reason] : cases) {
        const moxkit::Result result =
            traced({"-trace", "a", "-trace_file", file, "a=1", "a=2"}, "");
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "-trace_file: cannot write '" + file + "': " + reason +
                                  "\ntrace a: 1\ntrace a: 2\n");
    }
    if (!kit::hasDrives) {
        EXPECT_EQ(traced({"-trace", "a", "-trace_file", "none/\x1b[31m\n"}, "").err,
                  "-trace_file: cannot write 'none/\\x1B[31m\\x0A': No such file or directory\n");
    }
}

TEST(Trace, ADialogueHasThemToo) {
    const moxkit::TempTree tree;
    moxkit::RunOptions options;
    options.env["KAZ_DIALOGUE"] = tree.path("dialogue");
    const moxkit::Result result = moxkit::run({"trace_tool", "-trace", "a", "a=1", "b=2"}, options);
    EXPECT_EQ(result.err, "trace a: 1\n");
    EXPECT_NE(tree.read("dialogue").find(R"({"event":"trace","topic":"a","text":"1"})"),
              std::string::npos)
        << tree.read("dialogue");
}

TEST(Trace, WhoIsCompletingALineSeesNone) {
    for (const char* word : {"--complete", "--describe", "-help"}) {
        moxkit::RunOptions options;
        options.env["KAZ_TRACE"] = "all";
        EXPECT_EQ(moxkit::run({"moxcopy", word, "1", "-system", ""}, options).err, "") << word;
    }
    // A line that is not accepted asks for nothing, and its file stays as it is.
    const moxkit::TempTree tree;
    tree.write("file", "old");
    EXPECT_EQ(traced({"-trace_file", tree.path("file"), "-nonsense"}, "").status, 2);
    EXPECT_EQ(traced({"--explain", "-trace_file", tree.path("file")}, "").status, 0);
    EXPECT_EQ(tree.read("file"), "old");
}

/// A project that is copied, its configuration and its messages.
class TraceOfTheLibrary : public testing::Test {
protected:
    TraceOfTheLibrary() {
        tree.write("project/s/one.dgm", "x");
        tree.write("texts", "201 Done '%s'\n");
        EXPECT_EQ(
            moxkit::run({"moxmsg", "-source", tree.path("texts"), "-output", tree.path("msg")})
                .status,
            0);
        tree.write("info",
                   "msg_file=" + tree.native("msg") + "\nToolInfo=" + tree.native("gone") + "\n");
        options.env["ToolInfo"] = tree.native("info");
    }

    /// The traces of a copy, whose own output is as ever.
    Words tracesOf(const std::string& topic) {
        const moxkit::Result result =
            moxkit::run({"moxcopy", "-projdir", tree.path("project"), "-system", "s", "-target",
                         tree.path("copies"), "-Force", "-Quiet", "-trace", topic},
                        options);
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.out, "");
        Words traces;
        for (const std::string& line : kit::lines(result.err)) {
            EXPECT_EQ(line.rfind("trace " + topic + ": ", 0), 0U) << line;
            traces.push_back(line.substr(topic.size() + 8));
        }
        return traces;
    }
    static void expectInOrder(const Words& traces, const Words& expected) {
        auto from = traces.begin();
        for (const std::string& trace : expected) {
            from = std::find(from, traces.end(), trace);
            ASSERT_NE(from, traces.end()) << trace << " is missing in\n"
                                          << testing::PrintToString(traces);
        }
    }

    moxkit::TempTree tree;
    moxkit::RunOptions options;
};

TEST_F(TraceOfTheLibrary, ShowsWhereTheConfigurationComesFrom) {
    const std::string info = tree.native("info"), gone = tree.native("gone");
    const std::string size = std::to_string(tree.read("info").size());
    expectInOrder(tracesOf("config"),
                  {"trying " + info, "read " + info + ", " + size + " bytes", "trying " + gone,
                   "not opened: " + gone + ": No such file or directory"});
}

TEST_F(TraceOfTheLibrary, ShowsFilesMessagesAndArguments) {
    expectInOrder(tracesOf("files"), {"copy one.dgm"});
    const std::string msg = tree.native("msg");
    expectInOrder(tracesOf("messages"), {"message file " + msg});
    const Words missing = tracesOf("messages");
    EXPECT_EQ(std::count(missing.begin(), missing.end(), "text 200 is not in the message file"), 1);
    EXPECT_EQ(std::count(missing.begin(), missing.end(), "text 201 is not in the message file"), 0);
    expectInOrder(tracesOf("arguments"), {"3 -system: option -system", "4 s: value 1 of -system",
                                          "8 -Quiet: option -Quiet"});
    // What fails says why.
    options.env["KAZ_TRACE"] = "files";
    const std::string file = tree.path("none/file");
    const moxkit::Result result =
        moxkit::run({"moxmsg", "-source", tree.path("texts"), "-output", file}, options);
    EXPECT_EQ(result.err.substr(0, result.err.rfind(file)),
              "trace files: open " + tree.path("texts") + "\ntrace files: write " + file +
                  ": No such file or directory\n");
}

} // namespace
