// SPDX-License-Identifier: Apache-2.0
#include "tools/config/kazenv.h"

#include "tools/config/typed_value.h"

#include "probe.h"

#include "kit/random.h"
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

/// The option that carries a value of this name as a text of its own; "" for none.
std::string optionOf(const std::string& name) {
    for (const std::string option :
         {"projdir", "system", "Revision", "product",    "editor_name", "file",   "filter",
          "formats", "handle", "host",     "output",     "pageheight",  "port",   "printer",
          "session", "target", "toolinfo", "trace_file", "Type",        "source", "srcdir"})
        if (upper(option) == upper(name))
            return "-" + option.substr(0, option.find("_name"));
    return "";
}

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
            if (!optionOf(name).empty() && rng.oneIn(3)) {
                arguments.insert(arguments.end(), {optionOf(name), "argument" + name});
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
        "typed", "asgn\tport\t2147483648",  "asgn\tpagewidth\tinf",    "asgn\tbatch\tja",
        "typed", "asgn\tport\t+-5",         "asgn\tpagewidth\t   ",    "asgn\tbatch",
        "typed"};
    const Lines answers = ask(script, "port = 9 \n", {}, {"-batch", "-pagewidth", " 21.5 "});
    EXPECT_EQ(answers[0], "9 21.5 1");
    EXPECT_EQ(answers[4], "2147483647 -25 0");
    EXPECT_EQ(answers[8], "0 0 1");
    EXPECT_EQ(answers[12], "0 0 1") << "batch is the command line's again";
    EXPECT_EQ(ask({"typed"}, "", {}, {"-batch0"})[0], "0 0 0");
}

TEST(KazEnv, TheSystemDirectoryFollowsProjectAndSystem) {
    moxkit::TempTree home;
    moxkit::RunOptions run;
    run.env["HOME"] = home.path();
    const Lines script = {"env\tsystem_dir",       "asgn\tsystem\tsys",         "env\tsystem_dir",
                          "asgn\tprojdir\t\\~\\p", "env\tsystem_dir",           "asgn\tprojdir\t",
                          "env\tsystem_dir",       "asgn\tsystem_dir\tD:\\own", "env\tsystem_dir"};
    EXPECT_EQ(ask(script, "projdir=/work/p\n", run),
              (Lines{"-", "", "=\\work\\p\\sys", "", "=" + home.native() + "\\p\\sys", "", "-", "",
                     "=D:\\own"}));
    EXPECT_FALSE(home.exists("p")) << "asking makes no directory";
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
}

/// Good texts and what they mean, those that are out of range, and those that are no numbers;
/// what is not good leaves the default, 77, alone.
template <typename Number, typename Check>
void expectValues(Check check, Number least, Number greatest,
                  const std::map<std::string, Number>& good, const Lines& far, const Lines& bad) {
    const auto expect = [&](const char* text, kaz_value_enum result, Number expected = 77) {
        Number value = 77;
        EXPECT_EQ(check(text, least, greatest, &value), result) << text;
        EXPECT_EQ(check(text, least, greatest, nullptr), result) << text;
        EXPECT_EQ(value, expected) << text;
    };
    for (const auto& [text, value] : good)
        expect(text.c_str(), kaz_value_good, value);
    for (const std::string& text : far)
        expect(text.c_str(), kaz_value_out_of_range);
    for (const std::string& text : bad)
        expect(text.c_str(), kaz_value_malformed);
    expect(nullptr, kaz_value_missing);
}

TEST(TypedValue, TellsGoodNumbersFromBadOnes) {
    expectValues<int>(
        kaz_check_integer, -1, 2147483647,
        {{"-1", -1}, {"2147483647", 2147483647}, {" +7\t", 7}, {"\r\n42 ", 42}, {"007", 7}},
        {"-2", "2147483648", "99999999999999999999", "-99999999999999999999"},
        {"", " ", "abc", "8080x", "1.5", "0x10", "+-1", "++1", "1 2", "1e3"});
    expectValues<double>(kaz_check_real, -0.5, 210.0,
                         {{"-.5", -0.5}, {"210", 210}, {"1e-3", 0.001}, {" +2.25 ", 2.25}},
                         {"210.001", "-1", "1e999", "1e-999"},
                         {"", "a4", "2,5", "nan", "inf", "-infinity"});
}

} // namespace
