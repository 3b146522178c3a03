// SPDX-License-Identifier: Apache-2.0
#include "moxcopy.h"
#include "tools/formats/encode.h"

using namespace moxcopy_test;

TEST_F(MoxCopy, CopiesTheWholeSystemUnderTheConfiguredDirectory) {
    makeSystem();
    auto result = copy({});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "");
    const auto source = contents(tree, "plant/brewery");
    EXPECT_EQ(contents(tree, "copies/brewery"), source);
    EXPECT_TRUE(onlyCopyIn("copies"));
    EXPECT_EQ(fs::status(tree.path("copies/brewery/zero")).permissions(),
              fs::status(tree.path("plant/brewery/zero")).permissions());

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
    for (const std::string& name : names("plant/brewery")) {
        const std::string shown =
            kazPrintable(fs::path(name).make_preferred().string().c_str()).getValue();
        EXPECT_NE(result.out.find("Copied '" + shown + "'."), std::string::npos) << name;
    }
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
        {{"-p", "-system", "brewery"},
         "option -system NAME is missing\nmoxcopy: note: -system was taken as the value of "
         "-projdir"},
        {{"-p", "plant", "-s"}, "option -system needs a value"},
        {{"-p", "plant", "-s", "s", "-f", "x"},
         "-f means -formats, which is not for this program; did you mean -filter (-filt) "
         "or -Force (-F)?"},
        {{"-p", "-zzz", "-s", "s", "-100%s"}, "unknown option -100%s"},
        {{"-p", "", "-s", "s"}, "The project directory is empty"},
        {{"-p", "plant", "-s", "s", "-filter", "a/b"},
         "The filter is for file names, not for paths"},
    };
    for (const auto& [line, message] : lines) {
        std::vector<std::string> arguments = line;
        arguments.insert(arguments.begin(), program);
        auto result = runTool(arguments);
        EXPECT_EQ(result.status, 2) << message;
        EXPECT_EQ(result.err, "moxcopy: " + message + "\nmoxcopy -help shows how it is used\n");
        EXPECT_EQ(result.out, "");
    }
    const moxkit::Result help = runTool({program, "-zzz", "-help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_TRUE(
        help.out.starts_with("usage: moxcopy -projdir DIR -system NAME [-target DIR] "
                             "[-filter PATTERN] [-verbose] [-Force] [-Quiet] "
                             "[-trace TOPIC] [-trace_file FILE] [-progress_channel CHANNEL] "
                             "[--plan] "))
        << help.out;
    EXPECT_NE(help.out.find("\n  -projdir DIR" + std::string(15, ' ') + "project directory (-p)\n"),
              help.out.npos);
}

TEST_F(MoxCopy, KnowsTheNamesThatThereAre) {
    makeSystem();
    tree.mkdir("plant/big tank");
    tree.write("plant/brewery/-odd.dgm", "named like an option");
    EXPECT_EQ(runTool({program, "-p", "plant", "-s", "Brewry"}).err,
              "There is no system 'Brewry': no directory '" + tree.path("plant/Brewry") +
                  "'; did you mean brewery?\n");
    EXPECT_NE(
        copy({"-target", "t", "mashin"})
            .err.find(
                "Not copied: 'mashin' (the system has no such diagram; did you mean mashing?)"),
        std::string::npos);
    EXPECT_EQ(copy({"-target", "o", "--", "-odd"}).status, 0);
    EXPECT_EQ(names("o/brewery"), std::set<std::string>{"-odd.dgm"});
    EXPECT_EQ(runTool({program, "--complete", "3", "-p", "plant", "-s", "b"}).out,
              "big tank\t\nbrewery\t\n");
    EXPECT_EQ(runTool({program, "--complete", "4", "-p", "plant", "-s", "brewery", "a"}).out,
              "a_b\t\na_bc\t\n");
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
        arguments.insert(arguments.begin(), {program, "-p", "plant"});
        auto result = runTool(arguments);
        EXPECT_EQ(result.status, 2) << message;
        EXPECT_EQ(result.err, message);
    }
    auto result = runTool({program, "-p", "plant", "-s", "winery"});
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
    EXPECT_TRUE(result.err.starts_with("moxcopy: There is no -target, and the ToolInfo variable "
                                       "tmp_dir is not set\nmoxcopy -help"));
    fs::remove(tree.path("suite/ToolInfo"));
    result = copy({});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "ToolInfo environment variable is not set\n");
    EXPECT_EQ(copy({"-target", "t"}).status, 0) << "nothing is asked of it then";
    EXPECT_EQ(copy({"-target", "u", "mashing"}).status, 0) << "there is nothing to clean";
    EXPECT_EQ(copy({"-target", "v", "a(b"}).err, "ToolInfo environment variable is not set\n");
    result = runTool({program, "-p", "nowhere", "-s", "brewery", "-target", "t"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "There is no project directory '" + tree.path("nowhere") + "'\n");
}

TEST_F(MoxCopy, RefusesTargetsAndSourcesInOneAnother) {
    makeSystem();
    const char* const link = kit::hasDrives ? "plant/brewery/deep" : "link";
    if (!kit::hasDrives)
        fs::create_directory_symlink(tree.path("plant/brewery/deep"), tree.path("link"));
    const auto before = contents(tree, "plant");
    for (const char* target : {"plant", "plant/brewery", "plant/brewery/deep/new", link, "./plant/",
                               "plant/brewery/../../plant"}) {
        auto result = copy({"-Force", "-target", target});
        EXPECT_EQ(result.status, 2) << target;
        EXPECT_NE(result.err.find("one would lie in the other"), std::string::npos) << result.err;
    }
    // The destination would be the directory that holds the project.
    tree.write("brewery/plant/brewery/x", "x");
    auto result =
        runTool({program, "-p", "brewery/plant", "-s", "brewery", "-Force", "-target", "."});
    EXPECT_EQ(result.status, 2) << result.err;
    EXPECT_EQ(contents(tree, "plant"), before);
    EXPECT_EQ(copy({"-target", kit::hasDrives ? "Q:\\nowhere" : "C:\\nowhere"}).status, 1);
}

TEST_F(MoxCopy, AsksBeforeItOverwrites) {
    makeSystem();
    tree.write("copies/brewery/mashing.dgm", "old");
    tree.write("copies/brewery/own/notes.txt", "kept");
    const auto before = contents(tree, "copies");
    for (const char* answer : {"", "\n", "no\n", "what\n"}) {
        moxkit::RunOptions options;
        options.input = answer;
        auto result = copy({}, options);
        EXPECT_EQ(result.status, 1) << answer;
        EXPECT_NE(result.out.find("moxcopy: Overwrite the copy '" + tree.path("copies/brewery") +
                                  "'? Yes/[No] "),
                  std::string::npos)
            << result.out;
        EXPECT_EQ(contents(tree, "copies"), before);
    }
    moxkit::RunOptions noInput;
    noInput.closeStdin = true;
    EXPECT_EQ(copy({}, noInput).status, 1);
    EXPECT_EQ(contents(tree, "copies"), before);

    auto expected = contents(tree, "plant/brewery");
    expected["own"] = "/";
    expected["own/notes.txt"] = "kept";
    moxkit::RunOptions yes;
    yes.input = "y\n";
    const auto result = copy({}, yes);
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.out.find("\n1 file of the old copy was kept.\n"), std::string::npos);
    EXPECT_EQ(contents(tree, "copies/brewery"), expected);
    tree.write("plant/brewery/mashing.dgm", "newer");
    expected["mashing.dgm"] = "newer";
    EXPECT_EQ(copy({"-Force"}).status, 0);
    EXPECT_EQ(contents(tree, "copies/brewery"), expected);

    tree.write("file/brewery", "in the way");
    EXPECT_EQ(copy({"-Force", "-target", "file"}).status, 1);
    EXPECT_EQ(tree.read("file/brewery"), "in the way");
}

TEST_F(MoxCopy, NeedsNoStandardOutput) {
    makeSystem();
    const auto source = contents(tree, "plant/brewery");
    moxkit::RunOptions closed;
    closed.closeStdout = closed.closeStdin = true;
    EXPECT_EQ(copy({"-verbose"}, closed).status, 0);
    EXPECT_EQ(contents(tree, "copies/brewery"), source);
    moxkit::RunOptions full;
    full.stdoutFile = kit::fullDevice();
    const auto result = copy({"-verbose", "-target", "t"}, full);
    EXPECT_EQ(result.status, full.stdoutFile.empty() ? 0 : 1);
    EXPECT_EQ(result.err, full.stdoutFile.empty()
                              ? ""
                              : "Standard output cannot be written: No space left on device\n");
    EXPECT_EQ(contents(tree, "t/brewery"), source);
    EXPECT_EQ(contents(tree, "plant/brewery"), source);
}

TEST_F(MoxCopy, TakesThousandsOfDiagrams) {
    const int count = kit::hasDrives ? 3000 : 10'000; // what a command line holds
    std::vector<std::string> diagrams;
    for (int i = 0; i < count; ++i)
        diagrams.push_back("d" + std::to_string(i));
    for (int i = 0; i < 300; ++i)
        tree.write("plant/brewery/d" + std::to_string(i * 7) + ".dgm", "x");
    moxkit::RunOptions options;
    options.timeoutSeconds = 60; // six of processor time with the sanitizers
    auto result = copy(diagrams, options);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(names("copies/brewery").size(), 300u);
    EXPECT_TRUE(result.err.ends_with("\n" + std::to_string(count - 300) + " failures\n"));
}
