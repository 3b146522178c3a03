// SPDX-License-Identifier: Apache-2.0
// Every call of the system that configuration and message texts make, failing once.
#include "tools/config/filestore.h"
#include "tools/config/kazenv.h"
#include "tools/config/toolinfo.h"
#include "tools/messages/catalog/textcatalog.h"

#include "kit/posix/call_sweep.h"
#include "programs/moxmsg/message_file.h"
#include "testkit/director.h"
#include "testkit/env.h"
#include "testkit/temp_tree.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

std::string text(const char* value) {
    return value != nullptr ? value : "(null)";
}

class ConfigCalls : public testing::Test, protected kit::CallSweep {
protected:
    ConfigCalls() {
        tree.write("second", "later=second\n");
        tree.mkdir("here");
    }

    bool failedIn(const char* function) const { return std::strcmp(call_, function) == 0; }

    moxkit::TempTree tree{"/tmp"}; // file names are limited in length
    moxkit::ScopedEnv home{"HOME", tree.path().c_str()};
    moxkit::ScopedEnv toolInfo{"ToolInfo",
                               tree.write("first", "value=first\nToolInfo=~/second\n").c_str()};
    moxkit::RecordingDirector director;
};

TEST_F(ConfigCalls, TheFirstLookupReadsEachFileWholeOrNotAtAll) {
    const std::string first = tree.native("first"), second = tree.native("second");
    sweepFirstTime([] {}, [] { TI_Vinit(); },
                   [&](bool harmless) {
                       const bool none = !director.fatals.empty();
                       const bool both = text(TI_Vcont("later")) == "second";
                       EXPECT_TRUE(both || !harmless);
                       EXPECT_TRUE(!none || !both);
                       EXPECT_EQ(text(TI_Vcont("value")), none ? "(null)" : "first");
                       EXPECT_EQ(text(TI_Vcont("later")), both ? "second" : "(null)");
                       EXPECT_EQ(text(TI_Vcont("ToolInfoPath")),
                                 none ? "(null)" : first + (both ? " " + second : ""));
                   });
}

TEST_F(ConfigCalls, AFileOfMoreVariablesIsReadWholeOrNotAtAll) {
    TI_Vinit();
    const std::string file = tree.write("more", "top=new\n" + std::string(3, '%') +
                                                    std::string(100000, '\n') + "end=new\n");
    int result = 0;
    sweep(
        [] {
            TI_Var("top=old");
            TI_Var("end=old");
        },
        [&] { result = TI_V_user_file(file.c_str(), true); },
        [&](bool harmless) {
            EXPECT_TRUE(result == 0 || (result == -1 && !harmless));
            EXPECT_EQ(text(TI_Vcont("top")) + text(TI_Vcont("end")),
                      result == 0 ? "newnew" : "oldold");
        });
}

/// A project with one system, and what belongs to others beside it.
class FilestoreCalls : public ConfigCalls {
protected:
    FilestoreCalls() {
        TI_Vinit();
        kaz_env_projdir_asgn(tree.native("p").c_str());
        kaz_env_system_asgn("sys");
        kaz_env_revision_asgn("7");
        kaz_fs_filestore_dir_asgn("store");
        tree.write("p/own", "kept");
    }
};

TEST_F(FilestoreCalls, ASystemFileOpensUnderItsModeOrTheReasonIsTold) {
    tree.write("p/sys/.sys_file_mode", "");
    fs::permissions(tree.path("p/sys/.sys_file_mode"), static_cast<fs::perms>(0604));
    const unsigned long own = kaz_fs_file_umask("\\none");
    char name[] = "file";
    struct Case {
        std::FILE* (*open)(char*, char*);
        std::string directory;
        std::string mode;
        bool exists;
    };
    for (Case each : {Case{kaz_fs_open_sys_file, "p/sys", "r", true},
                      Case{kaz_fs_open_sys_file, "p/sys", "w", true},
                      Case{kaz_fs_open_filestore_file, "p/sys/store", "a", true},
                      Case{kaz_fs_open_filestore_file, "p/sys/store", "w", false}}) {
        const std::string file = each.directory + "/" + name;
        tree.mkdir(each.directory);
        std::FILE* stream = nullptr;
        sweep(
            [&] {
                director.errors.clear();
                fs::remove(tree.path(file));
                if (each.exists)
                    tree.write(file, "before");
            },
            [&] {
                stream = each.open(name, each.mode.data());
                const int reason = errno;
                // Whoever opens it closes it; that may fail, too.
                if (stream != nullptr)
                    std::fclose(stream);
                errno = reason;
            },
            [&](bool harmless) {
                const bool refused = failedIn("fopen") && !harmless;
                EXPECT_EQ(stream == nullptr, refused);
                std::vector<std::string> reports;
                if (refused)
                    reports.push_back(std::string("file Revision 7: ") + std::strerror(error_));
                EXPECT_EQ(director.errors, reports);
                const bool emptied = !refused && each.mode == "w";
                EXPECT_EQ(tree.read(file), each.exists && !emptied ? "before" : "");
                EXPECT_EQ(tree.exists(file), each.exists || !refused);
                if (!each.exists && !refused) {
                    const unsigned long mask = failedIn("fstatat") && !harmless ? own : 0062;
                    EXPECT_EQ(static_cast<unsigned>(fs::status(tree.path(file)).permissions()),
                              0666 & ~mask);
                }
                EXPECT_EQ(kaz_fs_file_umask("\\none"), own) << "the process's own mask is back";
            });
    }
}

TEST_F(FilestoreCalls, DirectoriesAreMadeOrTheResultTells) {
    const std::string system = tree.native("p\\sys"), store = system + "\\store";
    const std::string below = system + "\\a\\b", fresh = tree.native("p\\new");
    const moxkit::ScopedEnv debug("edit_debug_diag_rev", nullptr);
    struct Case {
        const char* what;
        std::function<std::string()> run;
        std::string done; ///< the answer when nothing fails
        std::string made; ///< the directory that is there then
        std::set<std::string> otherwise;
    };
    // The result, and what is in the buffer then.
    const auto inBuffer = [](const std::string& name, auto act) {
        return [name, act] {
            char buffer[kazFilestoreNameSize];
            std::strcpy(buffer, name.c_str());
            const int result = act(buffer);
            return std::to_string(result) + buffer;
        };
    };
    const auto join = [this](char* name) {
        const int result = kaz_fs_cat_dir(name, name + kazFilestoreNameSize, "sys\\store");
        EXPECT_TRUE(result == 1 || fs::is_directory(tree.path("p/sys/store")));
        return result;
    };
    const auto makeAbsolute = [](char* name) { return kaz_fs_make_absolute_dir(name), 0; };
    const auto assign = [] {
        kazSetDbOpen(1);
        const int result = edit_set_store_dir();
        return std::to_string(result) + text(TI_Vcont("filestore"));
    };
    const std::vector<Case> cases = {
        {"joined", inBuffer(tree.native("p"), join), "0" + store, "p/sys/store", {"1" + store}},
        {"filestore", kaz_fs_filestore_path, store, "p/sys/store", {}},
        {"system", edit_get_sys_dir, system, "p/sys", {}},
        {"made", inBuffer(below, edit_make_dir_name), "0" + below, "p/sys/a/b", {}},
        {"absolute", inBuffer("p\\.\\new", makeAbsolute), "0" + fresh, "p/new", {"0p\\.\\new"}},
        {"assigned", assign, "0" + store, "p/sys/store", {"0" + system}},
    };
    const fs::path here = fs::current_path();
    fs::current_path(tree.path());
    for (const bool exists : {false, true})
        for (const Case& each : cases) {
            SCOPED_TRACE(each.what);
            std::string answer;
            sweep(
                [&] {
                    for (const char* dir : {"p/sys", "p/new"})
                        fs::remove_all(tree.path(dir));
                    if (exists)
                        tree.write(each.made + "/own", "kept");
                    kazSetDbOpen(0);
                    edit_set_store_dir();
                },
                [&] { answer = each.run(); },
                [&](bool harmless) {
                    const bool told = each.otherwise.count(answer) > 0;
                    EXPECT_TRUE(answer == each.done || (told && !harmless)) << answer;
                    EXPECT_TRUE(!harmless || fs::is_directory(tree.path(each.made)));
                    EXPECT_EQ(tree.read("p/own"), "kept");
                    EXPECT_EQ(tree.read(each.made + "/own"), exists ? "kept" : "");
                    EXPECT_EQ(each.run(), each.done) << "the next try";
                });
        }
    fs::current_path(here);
    EXPECT_TRUE(director.errors.empty());
}

TEST_F(ConfigCalls, ATextIsTheRightOneOrEmpty) {
    TI_Vinit();
    Messages messages{"", {}, {}};
    for (int number = 1; number <= 300; ++number)
        messages.texts[number].text = std::to_string(number) + std::string(100, '-');
    messages.texts[15871].text = "last";
    std::map<int, std::string> texts;
    for (const int number : {1, 100, 200, 300, 15871})
        texts[number] = messages.texts[number].text;
    TI_Var(("msg_file=" + tree.write("file", encodeMessageFile(messages))).c_str());
    TI_Var(("TextStats=" + tree.path("stats")).c_str());
    std::map<int, std::string> found;
    const auto lookUp = [&] {
        for (const auto& each : texts)
            found[each.first] = TextLook(each.first);
    };
    const auto expectRightOrEmpty = [&](bool mayBeEmpty) {
        for (const auto& [number, shown] : found)
            EXPECT_TRUE(shown == texts[number] || (shown.empty() && mayBeEmpty)) << number;
    };
    const auto use = [&] {
        lookUp();
        TextStats();
    };
    sweepFirstTime([&] { tree.write("stats", "before\n"); }, use,
                   [&](bool harmless) {
                       expectRightOrEmpty(!harmless);
                       EXPECT_TRUE(found == texts || !director.errors.empty() || failedIn("pread"));
                       EXPECT_TRUE(found != texts || harmless || !failedIn("pread"));
                       const std::string stats = tree.read("stats");
                       EXPECT_TRUE(stats.starts_with("before\n"));
                       // A stream gives up where its write is interrupted: statistics are no
                       // result.
                       EXPECT_TRUE(!harmless || (error_ == EINTR && failedIn("write")) ||
                                   stats.ends_with("Text UNUSED\n\n"));
                       lookUp();
                       expectRightOrEmpty(failedIn("pread") && !harmless);
                   });
}

} // namespace
