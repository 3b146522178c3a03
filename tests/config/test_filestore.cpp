#include "tools/config/filestore.h"

#include "tools/config/kazenv.h"
#include "tools/config/toolinfo.h"
#include "tools/files/kazpath.h"

#include "kit/capture.h"
#include "kit/director.h"
#include "kit/env.h"
#include "kit/host.h"
#include "kit/process.h"
#include "kit/temp_tree.h"

#include <gtest/gtest.h>

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

TEST_F(Filestore, LongNamesAreLeftOutOrCutAndReported) {
    kaz_env_system_asgn("s");
    for (std::size_t length = 134; length <= 142; ++length) {
        const std::string project = dirOfLength(length);
        kaz_env_projdir_asgn(project.c_str());
        // With separator and terminator, 138 characters and a one-letter system
        // are one too many.
        std::string expected = length <= 139 ? project : "s";
        if (length <= 137)
            expected += "\\s";
        EXPECT_EQ(kaz_fs_filestore_path(), expected) << length;

        director.errors.clear();
        const std::string cut = (project + "\\s").substr(0, 139);
        EXPECT_EQ(edit_get_sys_dir(), cut) << length;
        const std::vector<std::string> report{"System directory '" + cut + "': name too long:"};
        EXPECT_EQ(director.errors, length <= 137 ? std::vector<std::string>() : report);
    }
    // A separator is counted also where the directory brings its own.
    const std::string ending = dirOfLength(137) + "\\";
    kaz_env_projdir_asgn(ending.c_str());
    EXPECT_EQ(kaz_fs_filestore_path(), ending);
    fs::remove("s");
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
    char name[] = "new", write[] = "w";
    const unsigned long own = kaz_fs_file_umask("\\none");
    if (kit::hasDrives)
        GTEST_SKIP() << "one permission and no classes of users";
    for (const unsigned bits : {0644U, 0600U, 0666U, 0444U}) {
        mode("p/sys/.sys_file_mode", bits);
        for (const std::string file : {"p/sys/new", "p/sys/store/new"}) {
            const bool inStore = file.size() > 9;
            std::fclose(inStore ? kaz_fs_open_filestore_file(name, write)
                                : kaz_fs_open_sys_file(name, write));
            EXPECT_EQ(modeOf(file), bits) << file;
            fs::remove(tree.path(file));
        }
        EXPECT_EQ(kaz_fs_file_umask("\\none"), own) << "the process's own mask is back";
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
    EXPECT_EQ(dir, tree.native() + "\\new/dir");
    EXPECT_TRUE(fs::is_directory(tree.path("new/dir")));
}

TEST_F(Filestore, IllegalDiagramCharactersAreReplaced) {
    const std::string illegal = " *\"'`?![](){};/\\&";
    EXPECT_EQ(kaz_illegal_diag_chars(), illegal);
    EXPECT_EQ(kaz_replace_diag_chars(), std::string(16, '_'));
    for (int c = 1; c < 256; ++c) {
        std::string text(3, static_cast<char>(c));
        const std::string expected = illegal.find(text[0]) != illegal.npos ? "___" : text;
        kaz_diag_strcpy(text.data(), text.c_str());
        EXPECT_EQ(text, expected);
    }
    // A tool's own sets, by position.
    kit::RunOptions options;
    options.env["ToolInfo"] =
        tree.write("ToolInfo", "illegal_diag_chars=abc\nreplace_diag_chars=12\n");
    options.input = "diag\txaybzc\n";
    EXPECT_EQ(kit::run({"config_probe"}, options).out, "x1y2z_\n");
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
    EXPECT_EQ(edit_make_name(), tree.native("p\\sys\\store\\my_diagram"));
    kaz_env_system_dir_asgn("\\s");
    for (const std::size_t length : {1U, 71U, 72U, 80U}) {
        const std::string revision(length, 'r'), used = revision.substr(0, 71);
        kaz_env_revision_asgn(revision.c_str());
        director.errors.clear();
        const kit::ScopedEnv debug("edit_debug_diag_rev", kit::hasDrives ? "1" : "");
        kit::Capture capture;
        EXPECT_EQ(edit_make_name(), "\\s\\store\\my_diagram." + used);
        EXPECT_EQ(capture.err(), "diag_rev set to " + used + "\n");
        EXPECT_EQ(director.errors.size(), length > 71 ? 1U : 0U);
    }
    EXPECT_EQ(director.errors[0],
              "Revision name '" + std::string(80, 'r') + "' too long, truncated");
    kaz_env_revision_asgn(nullptr);
    for (const std::size_t length : {139U, 140U, 141U, 300U}) {
        const std::string whole = "\\s\\store\\" + std::string(length - 9, 'd');
        kaz_env_diagram_asgn(whole.c_str() + 9);
        director.errors.clear();
        EXPECT_EQ(edit_make_name(), whole.substr(0, 140));
        EXPECT_EQ(director.errors.size(), length > 140 ? 1U : 0U) << length;
    }
    EXPECT_EQ(director.errors[0], "Filename too long '\\s\\store\\" + std::string(291, 'd') + "'");
}

} // namespace
