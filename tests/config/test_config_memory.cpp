// SPDX-License-Identifier: Apache-2.0
// Everything of the configuration while each allocation fails in turn.
#include "tools/app/KazMasterContext.h"
#include "tools/config/filestore.h"
#include "tools/config/kazenv.h"
#include "tools/config/toolinfo.h"
#include "tools/config/toolinfo_scan.h"

#include "kit/host.h"
#include "kit/sweep.h"
#include "testkit/director.h"
#include "testkit/env.h"
#include "testkit/temp_tree.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

/// The ways to fail. Where a lock gets its memory at its first use, no exception can
/// be thrown once all memory is gone.
std::vector<moxkit::FailAllocation::Mode> modes() {
    if (kit::hasDrives)
        return {moxkit::FailAllocation::once};
    return {moxkit::FailAllocation::onward, moxkit::FailAllocation::once};
}

using State = std::function<std::string()>;
using Action = std::function<void()>;

std::string text(const char* value) {
    return value != nullptr ? value : "(null)";
}

/// @p action either happens or leaves everything that @p state tells as it was,
/// and then happens after all. @p reset goes back to the start.
void sweep(const std::string& name, const Action& reset, const Action& action, const State& state) {
    SCOPED_TRACE(name);
    reset();
    const std::string before = state();
    action();
    const std::string after = state();
    for (const auto mode : modes()) {
        bool done = false;
        const auto tried = [&] {
            done = false;
            action();
            done = true;
        };
        const auto check = [&] {
            EXPECT_EQ(state(), done ? after : before);
            action();
            EXPECT_EQ(state(), after);
            reset();
        };
        reset();
        const long failures = moxkit::sweepAllocations(tried, check, mode);
        EXPECT_GT(failures, 0);
        EXPECT_EQ(state(), after);
    }
}

void sweepQuestion(const std::string& name, const State& ask) {
    kit::sweepQuestion(name, ask, modes());
}

/// Two files in a row, with a third one for later.
class ConfigMemory : public testing::Test {
protected:
    ConfigMemory() {
        tree.write("second", "later=second\nToolInfo=~/none\n");
        tree.write("third", "other=third\n" + longName + "=third\nlong=" + std::string(5200, 'v'));
        tree.mkdir("p/sys/store");
    }

    const std::string longName = std::string(100, 'n');
    moxkit::TempTree tree{"/tmp"};
    moxkit::ScopedEnv home{"HOME", tree.path().c_str()};
    moxkit::ScopedEnv toolInfo{"ToolInfo",
                               tree.write("first", "value=first\nToolInfo=~/second\n").c_str()};
    moxkit::RecordingDirector director;
};

TEST_F(ConfigMemory, FilesAreReadAtTheFirstLookupThatHasTheMemory) {
    long failures = 0;
    const auto read = [&] { TI_Vinit(); };
    for (const auto mode : modes())
        failures += moxkit::sweepAllocations(
            read, [] {}, mode);
    EXPECT_GT(failures, 2);
    EXPECT_STREQ(TI_Vcont("value"), "first");
    EXPECT_STREQ(TI_Vcont("later"), "second");
    EXPECT_EQ(TI_Vcont("ToolInfoPath"), tree.native("first") + " " + tree.native("second"));
    EXPECT_EQ(TI_Vfile(1).getValue(), tree.native("second"));
    EXPECT_LT(std::abs(std::difftime(TI_Vr_time(), std::time(nullptr))), 60);
    EXPECT_TRUE(TI_V_set_overwrite(true)) << "also when reading broke off in between";
    const std::string file = tree.path("third");
    sweepQuestion("lines", [&file] {
        std::string lines;
        const auto add = [](const KazVariableLine* line, void* all) {
            *static_cast<std::string*>(all) += std::string(line->file) + line->value;
        };
        if (TI_Vscan(add, &lines) != 0 || TI_Vscan_file(file.c_str(), add, &lines) != 0)
            throw KazMemoryException(); // no memory for the stream is no file
        return lines;
    });
}

TEST_F(ConfigMemory, VariablesChangeWhollyOrNotAtAll) {
    TI_Vinit();
    const char* const name = longName.c_str();
    const auto forget = [&] {
        KazMasterContext::getInstance()->setSlot(KazMasterContext::toolsSlot, nullptr);
        TI_Var((longName + "=before").c_str());
        TI_Var("other=");
    };
    const auto values = [&] {
        return text(TI_Vcont(name)) + text(TI_Vcont("other")) +
               (TI_V_set_overwrite(true) ? "" : "!");
    };
    const std::string file = tree.path("third");
    const auto read = [&] {
        if (TI_V_user_file(file.c_str(), true) != 0)
            throw KazMemoryException(); // no memory for the stream is no file
    };
    sweep("file", forget, read, values);
    sweep(
        "line", forget, [&] { TI_Var((longName + "=a value of some length").c_str()); }, values);
    sweep(
        "assignment", forget, [&] { TI_Vasg(name, "~/a/value"); }, values);

    TI_Vasg(name, "assigned");
    sweepQuestion("value", [&] { return text(TI_Vcont(name)) + text(TI_EnvVcont(name)); });
    sweepQuestion("home", [] { return std::string(_TI_hm("~/x")); });
    sweepQuestion("home copy", [] {
        const std::unique_ptr<char, decltype(&std::free)> copy(
            const_cast<char*>(kazGetUserHomeDir()), &std::free);
        return std::string(copy.get());
    });
    sweepQuestion("directories", [] {
        return std::string(kazMoxRootDir().getValue()) + kazMoxBinDir().getValue();
    });
    sweepQuestion("stream", [] {
        std::FILE* stream = _TI_Cfile();
        if (stream == nullptr)
            throw KazMemoryException();
        return std::to_string(std::fclose(stream));
    });
    sweepQuestion("walk", [] {
        std::string names;
        TI_Vwalk([](const char* each, void* all) { *static_cast<std::string*>(all) += each; },
                 &names);
        return names;
    });
    const moxkit::ScopedEnv value{"KAZ_VALUE", "a value that needs memory of its own"};
    sweepQuestion("overrides", [] {
        std::string all;
        TI_EnvVwalk([](const char*, const char* each,
                       void* text) { *static_cast<std::string*>(text) += each; },
                    &all);
        return all;
    });
}

TEST_F(ConfigMemory, ToolEnvironment) {
    const auto forget = [] {
        KazMasterContext::getInstance()->setSlot(KazMasterContext::toolsSlot, nullptr);
    };
    const auto ask = [] { return text(kaz_env_diagram()) + text(kaz_env_system_dir()); };
    const std::string project = tree.path("p");
    TI_Var(("projdir=" + project).c_str());
    TI_Var("diagram=from the files, at some length");
    sweep(
        "first question", forget, [&] { ask(); }, ask);
    sweep(
        "assignment", forget, [] { kaz_env_asgn(kaz_env_id_diagram, "a name of some length"); },
        ask);
    forget();
    kaz_env_system_asgn("sys");
    sweepQuestion("system directory", ask);
}

TEST_F(ConfigMemory, AFileOfTheFilestoreOpensOrThrows) {
    kaz_env_projdir_asgn(tree.native("p").c_str());
    kaz_env_system_asgn("sys");
    kaz_fs_filestore_dir_asgn("store");
    sweepQuestion("file", [] {
        char name[] = "file", mode[] = "w";
        std::FILE* stream = kaz_fs_open_filestore_file(name, mode);
        if (stream == nullptr)
            throw KazMemoryException();
        return std::to_string(std::fclose(stream));
    });
}

} // namespace
