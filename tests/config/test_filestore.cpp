#include "tools/config/filestore.h"

#include "tools/config/kazenv.h"
#include "tools/config/toolinfo.h"
#include "tools/files/kazpath.h"

#include "kit/capture.h"
#include "kit/director.h"
#include "kit/env.h"
#include "kit/random.h"
#include "kit/temp_tree.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

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

    /// A directory name of @p length characters inside the tree; native text.
    std::string dirOfLength(std::size_t length) const {
        std::string name = tree.native("d") + "\\";
        while (name.size() < length)
            name += name.size() % 30 == 0 && name.size() + 1 < length ? '\\' : 'x';
        return name;
    }

    void mode(const std::string& name, unsigned bits) const {
        fs::permissions(tree.path(name), static_cast<fs::perms>(bits));
    }
    unsigned modeOf(const std::string& name) const {
        return static_cast<unsigned>(fs::status(tree.path(name)).permissions());
    }

    kit::TempTree tree{"/tmp"}; // a short name, since lengths are what is tested
    kit::ScopedEnv toolInfo{"ToolInfo", "/no/such/file"};
    kit::RecordingDirector director;
};

TEST_F(Filestore, PathJoinsProjectSystemAndFilestore) {
    EXPECT_EQ(kaz_fs_filestore_path(), tree.native("p\\sys"));
    kaz_fs_filestore_dir_asgn("store");
    EXPECT_EQ(kaz_fs_filestore_path(), tree.native("p\\sys\\store"));
    EXPECT_TRUE(fs::is_directory(tree.path("p/sys/store")));
    EXPECT_EQ(edit_get_sys_dir(), tree.native("p\\sys"));
    EXPECT_TRUE(director.errors.empty());
}

TEST_F(Filestore, PathLeavesOutWhatDoesNotFit) {
    for (std::size_t length = 134; length <= 142; ++length) {
        const std::string project = dirOfLength(length);
        kaz_env_projdir_asgn(project.c_str());
        kaz_env_system_asgn("s");
        // With separator and terminator, 138 characters and a one-letter system
        // are one too many.
        std::string expected = length <= 139 ? project : "s";
        if (length <= 137)
            expected += "\\s";
        const kit::Capture quiet;
        EXPECT_EQ(kaz_fs_filestore_path(), expected) << length;
    }
    fs::remove("s");
}

TEST_F(Filestore, SystemDirectoryIsCutAndReportedWhenTooLong) {
    for (std::size_t length = 134; length <= 142; ++length) {
        const std::string project = dirOfLength(length);
        kaz_env_projdir_asgn(project.c_str());
        director.errors.clear();
        const std::string whole = project + "\\sys";
        EXPECT_EQ(edit_get_sys_dir(), whole.substr(0, 139)) << length;
        if (whole.size() <= 139)
            EXPECT_TRUE(director.errors.empty());
        else
            EXPECT_EQ(director.errors,
                      std::vector<std::string>{"System directory '" + whole.substr(0, 139) +
                                               "': name too long:"});
    }
}

TEST_F(Filestore, SystemDirectoryMayLieAtHome) {
    const kit::ScopedEnv home("HOME", tree.path().c_str());
    for (const char* project : {"~\\q", "\\~\\q", "~/q"}) {
        kaz_env_projdir_asgn(project);
        EXPECT_EQ(edit_get_sys_dir(), tree.native("q\\sys")) << project;
    }
}

TEST_F(Filestore, CatDirStaysInItsRoom) {
    const std::string dir = tree.native("d");
    for (int room = 1; room <= 141; ++room) {
        std::string buffer(200, '#');
        std::strcpy(buffer.data(), dir.c_str());
        const std::string rest = buffer.substr(dir.size() + 1);
        const bool fits = dir.size() + 4 < static_cast<std::size_t>(room);
        EXPECT_EQ(kaz_fs_cat_dir(buffer.data(), buffer.data() + room, "sub"), fits ? 0 : 2) << room;
        EXPECT_STREQ(buffer.c_str(), (fits ? dir + "\\sub" : dir).c_str());
        if (!fits) {
            EXPECT_EQ(buffer.substr(dir.size() + 1), rest);
        }
    }
    char buffer[140];
    std::strcpy(buffer, dir.c_str());
    EXPECT_EQ(kaz_fs_cat_dir(buffer, nullptr, "sub"), 2);
    EXPECT_EQ(kaz_fs_cat_dir(buffer, nullptr, ""), 0);
    EXPECT_EQ(kaz_fs_cat_dir(buffer, nullptr, nullptr), 0);
    EXPECT_EQ(buffer, dir);
    EXPECT_EQ(kaz_fs_cat_dir(nullptr, buffer, "x"), 1);
    const kit::ScopedEnv home("HOME", tree.path().c_str());
    std::memcpy(buffer, "\0#####", 6);
    EXPECT_EQ(kaz_fs_cat_dir(buffer, buffer + 4, "~"), 2) << "it fits, what it stands for does not";
    EXPECT_EQ(std::string(buffer, 6), std::string("\0#####", 6));
    buffer[0] = '\0';
    EXPECT_EQ(kaz_fs_cat_dir(buffer, buffer + 140, ""), 0) << "an empty name passes";
    tree.write("file", "");
    std::strcpy(buffer, tree.native("file").c_str());
    EXPECT_EQ(kaz_fs_cat_dir(buffer, buffer + 140, ""), 1);
    EXPECT_EQ(kaz_fs_cat_dir(buffer, buffer + 140, "x"), 1);
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
    tree.mkdir("p/sys/store");
    tree.write("p/sys/.sys_file_mode", "");
    kaz_fs_filestore_dir_asgn("store");
    char name[] = "new", name2[] = "new2", write[] = "w";
    for (const unsigned bits : {0644U, 0600U, 0666U, 0444U, 0640U}) {
        mode("p/sys/.sys_file_mode", bits);
        EXPECT_EQ(kaz_fs_system_umask(), bits ^ 0666U);
        for (const char* file : {"p/sys/new", "p/sys/store/new2"})
            fs::remove(tree.path(file));
        std::fclose(kaz_fs_open_sys_file(name, write));
        std::fclose(kaz_fs_open_filestore_file(name2, write));
        EXPECT_EQ(modeOf("p/sys/new"), bits);
        EXPECT_EQ(modeOf("p/sys/store/new2"), bits);
        // The process's own mask is back.
        tree.write("own", "");
        EXPECT_NE(modeOf("own") & 0200U, 0U);
        EXPECT_EQ(kaz_fs_file_umask(tree.native("none").c_str()), 0666U ^ modeOf("own"));
        fs::remove(tree.path("own"));
    }
    mode("p/sys/.sys_file_mode", 0755);
    EXPECT_EQ(kaz_fs_system_umask(), 0133U);
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
    kaz_env_revision_asgn("7");
    EXPECT_EQ(kaz_fs_open_sys_file(name, read), nullptr);
    EXPECT_EQ(director.errors,
              (std::vector<std::string>{"file Revision : No such file or directory",
                                        "file Revision 7: No such file or directory"}));
    const std::size_t room = 140 - tree.native("p\\sys\\").size();
    std::string fits(room, 'n'), tooLong(room + 1, 'n');
    std::FILE* stream = kaz_fs_open_sys_file(fits.data(), write);
    ASSERT_NE(stream, nullptr);
    std::fclose(stream);
    EXPECT_EQ(kaz_fs_open_sys_file(tooLong.data(), write), nullptr);
}

TEST_F(Filestore, StoreDirectoryIsAssignedWhenItChanges) {
    tree.mkdir("p/sys/store");
    kaz_fs_filestore_dir_asgn("store");
    const auto stored = [] {
        EXPECT_EQ(edit_set_store_dir(), 0);
        return std::string(TI_Vcont("filestore"));
    };
    EXPECT_EQ(stored(), tree.native("p\\sys"));
    kazSetDbOpen(1);
    EXPECT_EQ(kazGetDbOpen(), 1);
    EXPECT_EQ(stored(), tree.native("p\\sys\\store"));
    TI_Vasg("filestore", "mine");
    EXPECT_EQ(stored(), "mine") << "the directory is the one assigned last";
    tree.write("p/sys/file", "");
    kaz_fs_filestore_dir_asgn("file"); // unusable
    EXPECT_EQ(stored(), tree.native("p\\sys"));
    kazSetDbOpen(2);
    kaz_fs_filestore_dir_asgn("store");
    TI_Vasg("filestore", "mine");
    EXPECT_EQ(stored(), "mine");
}

TEST_F(Filestore, DirectoriesBecomeAbsoluteAndExist) {
    char dir[140];
    const fs::path before = fs::current_path();
    fs::current_path(tree.path());
    std::strcpy(dir, "made/below/../here");
    kaz_fs_make_absolute_dir(dir);
    fs::current_path(before);
    EXPECT_EQ(dir, std::string(kazFullPath(tree.path("made/here").c_str())));
    EXPECT_TRUE(fs::is_directory(tree.path("made/here")));
    EXPECT_EQ(edit_make_dir_name(nullptr), -1);
    dir[0] = '\0';
    EXPECT_EQ(edit_make_dir_name(dir), -1);
    const kit::ScopedEnv home("HOME", tree.path().c_str());
    std::strcpy(dir, "~/new/dir");
    EXPECT_EQ(edit_make_dir_name(dir), 0);
    EXPECT_EQ(dir, tree.native("new/dir").substr(0, tree.native().size()) + "\\new/dir");
    EXPECT_TRUE(fs::is_directory(tree.path("new/dir")));
}

TEST_F(Filestore, DiagramCharactersAreReplacedByPosition) {
    EXPECT_STREQ(kaz_illegal_diag_chars(), " *\"'`?![](){};/\\&");
    EXPECT_STREQ(kaz_replace_diag_chars(), "________________");
    for (int c = 1; c < 256; ++c) {
        const std::string text(3, static_cast<char>(c));
        char copy[4];
        kaz_diag_strcpy(copy, text.c_str());
        const bool illegal = std::strchr(kaz_illegal_diag_chars(), c) != nullptr;
        EXPECT_EQ(copy, illegal ? "___" : text);
    }
    char inPlace[] = "a b&c";
    kaz_diag_strcpy(inPlace, inPlace);
    EXPECT_STREQ(inPlace, "a_b_c");
}

TEST_F(Filestore, LegalNamesPassAndDiagramNamesAreCleaned) {
    const std::pair<const char*, const char*> cleaned[] = {
        {"-x y", "_x_y"},
        {"a-b", "a-b"},
        {"plain", "plain"},
        {"a{b}", "a{b}"},
        {"-", "_"},
        {"`!#$^&*-[]|\\:;\"',<>?/", "_______-_____________"},
        {"%@~=+.()", "%@~=+.()"}};
    for (const auto& [name, result] : cleaned) {
        kaz_env_diagram_asgn(name);
        EXPECT_EQ(edit_name_is_legal(edit_check_diagram | edit_check_wildcard, 1), 1) << name;
        EXPECT_STREQ(kaz_env_diagram(), result);
    }
    EXPECT_EQ(edit_name_is_legal(15, 1), 1);
    EXPECT_TRUE(director.errors.empty());
}

TEST_F(Filestore, EachFailingCheckHasItsMessage) {
    const auto failure = [this](int checks) {
        director.errors.clear();
        EXPECT_EQ(edit_name_is_legal(checks, 0), 0);
        EXPECT_TRUE(director.errors.empty());
        EXPECT_EQ(edit_name_is_legal(checks, 1), 0);
        return director.errors.size() == 1 ? director.errors[0] : "none or many";
    };
    kaz_env_diagram_asgn("");
    kaz_env_system_asgn("");
    kaz_env_projdir_asgn(nullptr);
    EXPECT_EQ(failure(15), "Empty diagram name");
    EXPECT_EQ(failure(14), "Empty system name");
    EXPECT_EQ(failure(12), "Empty project directory name");
    kaz_env_projdir_asgn("");
    EXPECT_EQ(edit_name_is_legal(edit_check_projdir, 1), 1);
    kaz_env_pdb_enabled_asgn("1");
    EXPECT_EQ(failure(4), "Empty project directory name");
    for (const char* name : {"a*", "b?", "[c]"}) {
        kaz_env_diagram_asgn(name);
        EXPECT_EQ(failure(8), std::string("Invalid Diagram name: ") + name);
    }
    EXPECT_EQ(edit_name_is_legal(0, 1), 1);
}

TEST_F(Filestore, DiagramFilesAreNamedWithinTheirLimits) {
    EXPECT_STREQ(edit_make_name(), "");
    kaz_env_diagram_asgn("my diagram");
    kaz_fs_filestore_dir_asgn("store");
    const std::string base = tree.native("p\\sys\\store\\my_diagram");
    EXPECT_EQ(edit_make_name(), base);
    kaz_env_system_dir_asgn("\\s");
    kaz_env_revision_asgn("1.2");
    {
        const kit::ScopedEnv debug("edit_debug_diag_rev", "");
        kit::Capture capture;
        EXPECT_STREQ(edit_make_name(), "\\s\\store\\my_diagram.1.2");
        EXPECT_EQ(capture.err(), "diag_rev set to 1.2\n");
    }
    for (const int length : {1, 70, 71, 72, 80}) {
        const std::string revision(static_cast<std::size_t>(length), 'r');
        kaz_env_revision_asgn(revision.c_str());
        director.errors.clear();
        EXPECT_EQ(edit_make_name(), "\\s\\store\\my_diagram." + revision.substr(0, 71));
        EXPECT_EQ(director.errors.size(), length > 71 ? 1U : 0U);
    }
    EXPECT_EQ(director.errors[0],
              "Revision name '" + std::string(80, 'r') + "' too long, truncated");
    kaz_env_revision_asgn(nullptr);
    for (const int length : {138, 139, 140, 141, 300}) {
        const std::string whole =
            "\\s\\store\\" + std::string(static_cast<std::size_t>(length) - 9, 'd');
        kaz_env_diagram_asgn(whole.c_str() + 9);
        director.errors.clear();
        EXPECT_EQ(edit_make_name(), whole.substr(0, 140));
        EXPECT_EQ(director.errors.size(), length > 140 ? 1U : 0U) << length;
    }
    EXPECT_EQ(director.errors[0], "Filename too long '\\s\\store\\" + std::string(291, 'd') + "'");
}

} // namespace
