// SPDX-License-Identifier: Apache-2.0
#include "tools/config/filestore.h"

#include "tools/config/kazenv.h"
#include "tools/config/toolinfo.h"
#include "tools/files/kazpath.h"

#include "kit/host.h"
#include "testkit/capture.h"
#include "testkit/director.h"
#include "testkit/env.h"
#include "testkit/process.h"
#include "testkit/temp_tree.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

/// A project in a tree of its own, and no other configuration.
class Filestore : public testing::Test {
protected:
    Filestore() {
        kaz_env_projdir_asgn(tree.native("p").c_str());
        kaz_env_system_asgn("sys");
        for (const auto id : {kaz_env_id_system_dir, kaz_env_id_diagram, kaz_env_id_revision,
                              kaz_env_id_pdb_enabled})
            kaz_env_asgn(id, nullptr);
        kaz_fs_filestore_dir_asgn("");
        kazSetDbOpen(0);
        kazSetDbReadonly(false);
    }

    void mode(const std::string& name, unsigned bits) const {
        fs::permissions(tree.path(name), static_cast<fs::perms>(bits));
    }
    unsigned modeOf(const std::string& name) const {
        return static_cast<unsigned>(fs::status(tree.path(name)).permissions());
    }

    std::string saidByProbe(const std::string& script, const std::string& variables) const {
        moxkit::RunOptions options;
        options.env["ToolInfo"] = tree.write("ToolInfo", variables);
        options.input = script;
        return moxkit::run({"config_probe"}, options).out;
    }

    moxkit::TempTree tree{"/tmp"}; // a short name, since lengths are what is tested
    moxkit::ScopedEnv toolInfo{"ToolInfo", "/no/such/file"};
    moxkit::RecordingDirector director;
};

TEST_F(Filestore, WhatIsNoDirectoryIsNotUsable) {
    char buffer[kazFilestoreNameSize];
    char* const end = buffer + sizeof buffer;
    EXPECT_EQ(kaz_fs_cat_dir(nullptr, end, "x"), 1);
    tree.write("file", "");
    std::strcpy(buffer, tree.native("file").c_str());
    for (const char* below : {"", "x", static_cast<const char*>(nullptr)})
        EXPECT_EQ(kaz_fs_cat_dir(buffer, end, below), 1);
    EXPECT_EQ(kaz_fs_cat_dir(buffer, buffer, "x"), 2);
    EXPECT_EQ(edit_make_dir_name(nullptr), -1);
    buffer[0] = '\0';
    EXPECT_EQ(edit_make_dir_name(buffer), -1);
    kaz_fs_make_absolute_dir(buffer);
    kaz_fs_make_absolute_dir(nullptr);
    kaz_diag_strcpy(nullptr, "x");
    kaz_diag_strcpy(buffer, nullptr);
    EXPECT_STREQ(buffer, "");
}

TEST_F(Filestore, ReadOnlyDatabasesNeedNoWritePermission) {
    std::string dir = tree.native("d");
    tree.mkdir("d");
    mode("d", 0555);
    // Some users may write everywhere.
    const bool mayWrite = std::ofstream(tree.path("d/probe")).good();
    EXPECT_EQ(kaz_fs_cat_dir(dir.data(), nullptr, ""), mayWrite ? 0 : 1);
    kazSetDbReadonly(true);
    EXPECT_TRUE(kazIsDbReadonly());
    EXPECT_EQ(kaz_fs_cat_dir(dir.data(), nullptr, ""), 0);
    mode("d", 0755);
}

TEST_F(Filestore, NewFilesGetTheModeThatTheSystemPrescribes) {
    tree.write("p/sys/.sys_file_mode", "");
    char name[] = "new", write[] = "w";
    const unsigned long own = kaz_fs_file_umask("\\none");
    if (kit::hasDrives)
        GTEST_SKIP() << "one permission and no classes of users";
    for (const unsigned bits : {0644U, 0600U, 0666U, 0444U}) {
        mode("p/sys/.sys_file_mode", bits);
        std::fclose(kaz_fs_open_sys_file(name, write));
        EXPECT_EQ(modeOf("p/sys/new"), bits);
        fs::remove(tree.path("p/sys/new"));
        EXPECT_EQ(kaz_fs_file_umask("\\none"), own) << "the process's own mask is back";
    }
    mode("p/sys/.sys_file_mode", 0755);
    EXPECT_EQ(kaz_fs_system_umask(), 0133U);
    // A system directory that somebody has given with "~" is the same one.
    const moxkit::ScopedEnv home("HOME", tree.path().c_str());
    kaz_env_system_dir_asgn("~\\p/sys");
    EXPECT_EQ(kaz_fs_system_umask(), 0133U);
    EXPECT_EQ(kaz_fs_file_umask("~/p/sys/.sys_file_mode"), 0133U);
    std::fclose(kaz_fs_system_umask_fopen("~/p/sys/new", write));
    EXPECT_EQ(modeOf("p/sys/new"), 0644U);
}

TEST_F(Filestore, OpensNothingForMissingAndLongNames) {
    tree.mkdir("p/sys");
    char read[] = "r", write[] = "w", name[] = "file";
    EXPECT_EQ(kaz_fs_open_sys_file(nullptr, read), nullptr);
    kaz_env_system_asgn("");
    EXPECT_EQ(kaz_fs_open_sys_file(name, write), nullptr);
    kaz_env_system_asgn("sys");
    EXPECT_TRUE(director.errors.empty()) << "only what could be named is reported";

    EXPECT_EQ(kaz_fs_open_sys_file(name, read), nullptr);
    EXPECT_EQ(errno, ENOENT) << "also after the report";
    kaz_env_revision_asgn("7");
    EXPECT_EQ(kaz_fs_open_sys_file(name, read), nullptr);
    EXPECT_EQ(director.errors,
              (std::vector<std::string>{"file Revision : No such file or directory",
                                        "file Revision 7: No such file or directory"}));
    EXPECT_EQ(kaz_fs_open_sys_file(name, nullptr), nullptr);
    const moxkit::ScopedEnv graphical("PROBE_GRAPHICAL", "1"); // reports it as a message
    EXPECT_EQ(saidByProbe("open\tfile\n", "projdir=/p\nsystem=s\n"),
              "file Revision : No such file or directory\n-\n");
    const std::size_t room = 140 - tree.native("p\\sys\\").size();
    std::string fits(room, 'n'), tooLong(room + 1, 'n');
    std::FILE* stream = kaz_fs_open_sys_file(fits.data(), write);
    ASSERT_NE(stream, nullptr);
    std::fclose(stream);
    EXPECT_EQ(kaz_fs_open_sys_file(tooLong.data(), write), nullptr);
}

TEST_F(Filestore, StoreDirectoryIsAssignedWhenItChanges) {
    tree.mkdir("p/sys/store");
    tree.write("p/sys/file", "");
    const auto stored = [](const char* directory, int isOpen) {
        kaz_fs_filestore_dir_asgn(directory);
        kazSetDbOpen(isOpen);
        EXPECT_EQ(kazGetDbOpen(), isOpen);
        EXPECT_EQ(edit_set_store_dir(), 0);
        return std::string(TI_Vcont("filestore"));
    };
    EXPECT_EQ(stored("store", 1), tree.native("p\\sys\\store"));
    TI_Vasg("filestore", "mine");
    EXPECT_EQ(stored("store", 1), "mine") << "the directory is the one assigned last";
    EXPECT_EQ(stored("file", 1), tree.native("p\\sys")) << "unusable";
    TI_Vasg("filestore", "mine");
    EXPECT_EQ(stored("store", 2), "mine");
}

TEST_F(Filestore, AToolsOwnSetOfIllegalCharactersIsReplacedByPosition) {
    EXPECT_EQ(saidByProbe("diag\txaybzc\n", "illegal_diag_chars=abc\nreplace_diag_chars=12\n"),
              "x1y2z_\n");
}

TEST_F(Filestore, TheRevisionInUseIsTracedOnRequest) {
    kaz_env_diagram_asgn("my diagram");
    const std::string revision(80, 'r'), used = revision.substr(0, 71);
    kaz_env_revision_asgn(revision.c_str());
    const moxkit::ScopedEnv debug("edit_debug_diag_rev", "1");
    moxkit::Capture capture;
    EXPECT_EQ(edit_make_name(), tree.native("p\\sys\\my_diagram") + "." + used);
    EXPECT_EQ(capture.err(), "diag_rev set to " + used + "\n");
}

} // namespace
