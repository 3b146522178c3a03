// SPDX-License-Identifier: Apache-2.0
#include "tools/config/kazenv.h"

#include "probe.h"

#include "kit/host.h"
#include "kit/random.h"
#include "testkit/env.h"
#include "testkit/process.h"
#include "testkit/temp_tree.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace {

/// The probe with a ToolInfo file of this text.
Lines ask(const Lines& script, const std::string& toolInfo, moxkit::RunOptions options = {},
          const Lines& arguments = {}) {
    const moxkit::TempTree tree;
    options.cwd = tree.path(); // a file of traces is made where the probe runs
    options.env["ToolInfo"] = tree.write("ToolInfo", toolInfo);
    return ::ask(script, options, arguments);
}

std::string nameOf(int id) {
    return kaz_env_name(static_cast<kaz_env_id_enum>(id));
}

std::string upper(std::string text) {
    for (char& c : text)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

/// Options that carry a text of their own under the value's name.
const std::map<std::string, std::string> options = {
    {"projdir", "-projdir"}, {"system", "-system"},      {"revision", "-Revision"},
    {"product", "-product"}, {"editor_name", "-editor"}, {"file", "-file"},
    {"filter", "-filter"},   {"formats", "-formats"},    {"handle", "-handle"},
    {"host", "-host"},       {"output", "-output"},      {"pageheight", "-pageheight"},
    {"port", "-port"},       {"printer", "-printer"},    {"session", "-session"},
    {"target", "-target"},   {"toolinfo", "-toolinfo"},  {"trace_file", "-trace_file"},
    {"type", "-Type"},       {"source", "-source"},      {"srcdir", "-srcdir"},
};

TEST(KazEnv, EachValueComesFromTheFirstSourceThatHasIt) {
    kit::Random rng;
    for (int round = 0; round < 8; ++round) {
        Lines arguments, script, expected;
        moxkit::RunOptions run;
        std::string toolInfo;
        std::map<std::string, std::string> assigned, values;
        for (int id = 0; id < kaz_env_id_count; ++id) {
            const std::string name = nameOf(id);
            run.env["KAZ_" + upper(name)] = moxkit::unset;
            if (rng.oneIn(2)) {
                toolInfo += name + "=file" + name + "\n";
                values[name] = "file" + name;
            }
            if (rng.oneIn(3)) {
                run.env["KAZ_" + upper(name)] = rng.oneIn(3) ? "" : "environment";
                values[name] = run.env["KAZ_" + upper(name)];
            }
            if (options.count(name) != 0 && rng.oneIn(3)) {
                arguments.insert(arguments.end(), {options.at(name), "argument" + name});
                values[name] = "argument" + name;
            }
        }
        const auto query = [&](const std::string& name) {
            const auto& source = assigned.count(name) != 0 ? assigned : values;
            std::string answer = source.count(name) != 0 ? "=" + source.at(name) : "-";
            // The one value that is made of two others.
            if (answer == "-" && name == "system_dir")
                return;
            script.push_back("env\t" + name);
            expected.push_back(answer);
        };
        for (int step = 0; step < 300; ++step) {
            const std::string name = nameOf(rng.below(kaz_env_id_count));
            if (!rng.oneIn(3)) {
                query(name);
                continue;
            }
            const std::optional<std::string> text =
                rng.oneIn(3) ? std::nullopt : std::optional(rng.text(3, "xyz"));
            script.push_back("asgn\t" + name + (text ? "\t" + *text : ""));
            expected.emplace_back();
            if (text)
                assigned[name] = *text;
            else
                assigned.erase(name);
        }
        ASSERT_EQ(ask(script, toolInfo, run, arguments), expected) << "round " << round;
    }
}

TEST(KazEnv, SwitchesAndNumbersHaveTheirTypes) {
    const Lines script = {
        "typed", "asgn\tport\t+2147483647", "asgn\tpagewidth\t-2.5e1", "asgn\tbatch\tno",
        "typed", "asgn\tport\t2147483648",  "asgn\tpagewidth\tinf",    "asgn\tbatch\t",
        "typed", "asgn\tport\t12x",         "asgn\tpagewidth\t1,5",    "asgn\tbatch\tja",
        "typed", "asgn\tport\t+-5",         "asgn\tpagewidth\t   ",    "asgn\tbatch",
        "typed"};
    const Lines answers = ask(script, "port = 9 \n", {}, {"-batch", "-pagewidth", " 21.5 "});
    EXPECT_EQ(answers[0], "9 21.5 1");
    EXPECT_EQ(answers[4], "2147483647 -25 0");
    EXPECT_EQ(answers[8], "0 0 0");
    EXPECT_EQ(answers[12], "0 0 1");
    EXPECT_EQ(answers[16], "0 0 1") << "batch is the command line's again";
    EXPECT_EQ(ask({"typed"}, "", {}, {"-batch0"})[0], "0 0 0");
}

TEST(KazEnv, TheSystemDirectoryFollowsProjectAndSystem) {
    moxkit::TempTree home;
    moxkit::RunOptions run;
    run.env["HOME"] = home.path();
    const Lines script = {"env\tsystem_dir",       "asgn\tsystem\tsys",         "env\tsystem_dir",
                          "asgn\tprojdir\t\\~\\p", "env\tsystem_dir",           "asgn\tprojdir\t",
                          "env\tsystem_dir",       "asgn\tsystem_dir\tD:\\own", "env\tsystem_dir"};
    const Lines answers = ask(script, "projdir=/work/p\n", run);
    EXPECT_EQ(answers[0], "-");
    EXPECT_EQ(answers[2], "=\\work\\p\\sys");
    EXPECT_EQ(answers[4], "=" + home.native() + "\\p\\sys");
    EXPECT_EQ(answers[6], "-");
    EXPECT_EQ(answers[8], "=D:\\own");
    EXPECT_FALSE(home.exists("p")) << "asking makes no directory";
}

TEST(KazEnv, TheToolOfTheGuideFindsItsSettings) {
    const moxkit::TempTree tree;
    moxkit::RunOptions run;
    run.env["ToolInfo"] = tree.write("ToolInfo", "tmp_dir = /tmp\nbackup_command = zip\n");
    run.env["KAZ_BACKUP_COMMAND"] = "pack ${ti.tmp_dir} ${archive} ${dir}";
    const Lines arguments = {"configuration_guide", "-projdir", "/p", "-system", "$(s) x"};
    const std::string archive =
        kit::hasDrives ? R"("\\tmp\\\$(s) x.tar")" : R"("/tmp/\$(s) x.tar")";
    const std::string dir = kit::hasDrives ? R"("\\p\\\$(s) x")" : R"("/p/\$(s) x")";
    EXPECT_EQ(moxkit::run(arguments, run).out, "pack /tmp " + archive + " " + dir + "\n");
    run.env["KAZ_BACKUP_COMMAND"] = moxkit::unset;
    run.env["KAZ_VERBOSE"] = "yes";
    EXPECT_EQ(moxkit::run(arguments, run).out, "system directory: \\p\\$(s) x\nzip\n");
    run.env["ToolInfo"] = tree.write("ToolInfo", "tmp_dir = /tmp\n");
    EXPECT_EQ(moxkit::run(arguments, run).out,
              "system directory: \\p\\$(s) x\ntar -cf " + archive + " " + dir + "\n");
}

TEST(KazEnv, UnknownIdentifiersNameNothing) {
    for (const int id : {-1, kaz_env_id_count, 1000}) {
        const auto unknown = static_cast<kaz_env_id_enum>(id);
        EXPECT_EQ(kaz_env_name(unknown), nullptr);
        EXPECT_EQ(kaz_env_text(unknown), nullptr);
        EXPECT_FALSE(kaz_env_is_set(unknown));
        EXPECT_EQ(kaz_env_kind(unknown), kaz_env_kind_text);
        kaz_env_asgn(unknown, "x");
    }
    EXPECT_EQ(kaz_env_kind(kaz_env_id_port), kaz_env_kind_integer);
}

} // namespace
