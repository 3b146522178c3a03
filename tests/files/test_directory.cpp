// SPDX-License-Identifier: Apache-2.0
// Directories by handle, places in a tree, and the functions on single paths.
#include "tools/files/KazDirectory.h"
#include "tools/files/KazTreeCursor.h"
#include "tools/files/processstamp.h"
#include "tools/files/tistatus.h"

#include "kit/host.h"
#include "kit/random.h"
#include "testkit/temp_tree.h"
#include "tree.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

class Directory : public testing::Test {
protected:
    static std::set<std::string> namesIn(const KazDirectory& directory, const char* pattern) {
        std::vector<KazDirectoryEntry> entries;
        EXPECT_EQ(directory.list(pattern, entries), 0);
        std::set<std::string> names;
        for (const KazDirectoryEntry& entry : entries)
            names.insert(entry.name.getValue());
        EXPECT_EQ(names.size(), entries.size());
        return names;
    }

    moxkit::TempTree tree{fs::is_directory("/dev/shm") ? "/dev/shm" : ""};
    const KazDirectory top{tree.native().c_str()};
};

TEST_F(Directory, DoesWithEntriesWhatTheirNamesSay) {
    ASSERT_TRUE(top.isOpen());
    for (const std::string& name : tree::awkwardNames()) {
        tree.write(name, "text of " + name);
        EXPECT_EQ(top.makeDirectory("to", 0700), 0) << name;
        const KazDirectory to = top.openDirectory("to");
        KazFileStatus status;
        EXPECT_EQ(top.getStatus(name.c_str(), status), 0);
        EXPECT_EQ(status.kind, KazFileKind::File);
        EXPECT_EQ(status.size, name.size() + 8);
        EXPECT_EQ(top.copyFile({name.c_str(), KazFileKind::File, true}, to), 0);
        EXPECT_EQ(top.copyFile({name.c_str(), KazFileKind::File, true}, to), -1);
        EXPECT_EQ(errno, EEXIST);
        EXPECT_EQ(tree.read("to/" + name), "text of " + name);
        EXPECT_EQ(top.rename(name.c_str(), to, name.c_str(), false), -1);
        EXPECT_EQ(errno, EEXIST);
        EXPECT_EQ(to.rename(name.c_str(), top, "new", false), 0);
        EXPECT_EQ(namesIn(top, "*"), (std::set<std::string>{name, "new", "to"}));
        EXPECT_EQ(top.removeFile("new"), 0);
        EXPECT_EQ(top.removeTree(name.c_str()), 0);
        EXPECT_EQ(top.removeDirectory("to"), 0);
    }
    EXPECT_EQ(namesIn(top, "*"), std::set<std::string>{});
    tree.write("in/x", "x");
    KazDirectory in = top.openDirectory("in");
    KazFileStatus status, above;
    EXPECT_EQ(in.openParent().getStatus(above), 0);
    EXPECT_EQ(top.getStatus(status), 0);
    EXPECT_TRUE(status.isSameFile(above));
    for (const char* name : {static_cast<const char*>(nullptr), "", ".", "..", "in/x", "../x"}) {
        EXPECT_FALSE(top.openDirectory(name).isOpen());
        EXPECT_EQ(errno, EINVAL);
        EXPECT_EQ(top.removeTree(name), -1);
        EXPECT_EQ(top.makeDirectory(name, 0700), -1);
        EXPECT_EQ(top.rename("in", top, name, true), -1);
        EXPECT_EQ(top.openFile(name, "w"), nullptr);
    }
    in.close();
    EXPECT_EQ(in.removeFile("x"), -1);
    EXPECT_EQ(errno, EBADF);
    EXPECT_TRUE(tree.exists("in/x"));
}

TEST_F(Directory, OpensFilesOfItsOwnOnly) {
    for (const char* mode : {"wx", "r+", "a", "w", "r"}) {
        FILE* file = top.openFile("f", mode);
        ASSERT_NE(file, nullptr) << mode;
        EXPECT_EQ(std::fputs("abc", file) >= 0 && std::fflush(file) == 0, *mode != 'r' || mode[1]);
        std::fclose(file);
    }
    EXPECT_EQ(tree.read("f"), "abc");
    EXPECT_EQ(top.openFile("f", "wx"), nullptr);
    EXPECT_EQ(errno, EEXIST);
    EXPECT_EQ(top.openFile("missing", "r"), nullptr);
    EXPECT_EQ(errno, ENOENT);
    tree.mkdir("d");
    EXPECT_EQ(top.openFile("d", "r"), nullptr);
    EXPECT_EQ(errno, EISDIR);
}

TEST_F(Directory, LargeCopiesAskWhetherToGoOn) {
    const std::string text(std::size_t{100} << 20, 'x');
    tree.write("large", text);
    const KazDirectory to(tree.mkdir("to").c_str());
    static int asked;
    asked = 0;
    KazCopyRules rules;
    rules.goesOn = [] { return ++asked < 2; };
    for (const bool inPlace : {false, true}) {
        rules.inPlace = inPlace;
        if (kit::hasDrives) // the emulated system copies without asking
            continue;
        EXPECT_EQ(top.copyFile({"large", KazFileKind::File, true}, to, rules), -1);
        EXPECT_EQ(errno, ECANCELED);
        EXPECT_EQ(namesIn(to, "*"), std::set<std::string>{});
    }
    EXPECT_TRUE(asked >= 2 || kit::hasDrives);
    rules.goesOn = [] { return true; };
    std::uint64_t size = 0;
    rules.size = &size;
    EXPECT_EQ(top.copyFile({"large", KazFileKind::File, true}, to, rules), 0);
    EXPECT_EQ(size, text.size());
    EXPECT_TRUE(tree.read("to/large") == text);
}

TEST_F(Directory, PathsAreNamedRemovedAndRenamed) {
    tree.write("d/sub/f", "x");
    const auto path = [&](const std::string& name) { return tree.native(name); };
    KazFileStatus status;
    EXPECT_EQ(TI_status(path("d/").c_str(), status), 0);
    EXPECT_EQ(status.kind, KazFileKind::Directory);
    EXPECT_EQ(TI_status((path("d") + "\\sub\\..").c_str(), status), 0);
    EXPECT_EQ(TI_status(path("d/none").c_str(), status), -1);
    EXPECT_EQ(status.kind, KazFileKind::Missing);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_TRUE(TI_exists(path("d/sub/f").c_str()) && TI_isFile(path("d/sub/f").c_str()));
    EXPECT_TRUE(TI_isDirectory(path("d").c_str()) && !TI_isFile(path("d").c_str()));
    for (const char* none : {"", kit::hasDrives ? "Q:\\x" : "C:\\x", "\\\\srv\\share\\x"}) {
        EXPECT_FALSE(TI_exists(none)) << none;
        EXPECT_NE(TI_rmtree(none), 0);
        EXPECT_NE(TI_rename(none, path("x").c_str(), true), 0);
        EXPECT_NE(TI_rename(path("d").c_str(), none, true), 0);
    }
    EXPECT_FALSE(TI_exists(nullptr));
    for (const char* dots : {"d/.", "d/sub/..", "."})
        EXPECT_NE(TI_rmtree(path(dots).c_str()), 0);
    EXPECT_EQ(TI_rename(path("d/sub").c_str(), path("e").c_str(), false), 0);
    EXPECT_EQ(TI_rename(path("e").c_str(), path("d").c_str(), false), -1);
    EXPECT_EQ(errno, EEXIST);
    EXPECT_NE(TI_rmdir(path("e").c_str()), 0);
    EXPECT_NE(TI_remove(path("e").c_str()), 0);
    EXPECT_EQ(TI_rmdir(path("d/").c_str()), 0);
    EXPECT_EQ(TI_remove(path("e/f").c_str()), 0);
    tree.write("e/a/b/c", "x");
    EXPECT_EQ(TI_rmtree(path("e/").c_str()), 0);
    EXPECT_EQ(namesIn(top, "*"), std::set<std::string>{});
}

/// Random moves about a tree; the cursor is where a path of names says.
TEST_F(Directory, ACursorIsWhereItsMovesLead) {
    kit::Random random;
    KazTreeCursor cursor{KazDirectory(tree.native().c_str())};
    fs::path place = tree.path();
    std::vector<std::string> names;
    for (int step = 0; step < 2000; ++step) {
        const std::string name =
            random.oneIn(2) ? "down" : std::string{'d', static_cast<char>('0' + random.below(9))};
        if (!names.empty() && random.below(100) < (step / 200 % 2 == 0 ? 20 : 80)) {
            ASSERT_EQ(cursor.leave(), 0);
            names.pop_back();
            place = place.parent_path();
        } else {
            const bool isNew = cursor.directory().makeDirectory(name.c_str(), 0755) == 0;
            ASSERT_TRUE(isNew || errno == EEXIST);
            ASSERT_EQ(cursor.enter(name.c_str()), 0);
            names.push_back(name);
            place /= name;
        }
        ASSERT_EQ(cursor.getDepth(), static_cast<int>(names.size()));
        std::string path;
        for (const std::string& each : names)
            path += (path.empty() ? "" : "\\") + each;
        ASSERT_EQ(cursor.getPath(), path.c_str());
        if (step % 20 == 0 && place.string().size() < 200) {
            const std::string mark = "mark" + std::to_string(step);
            std::fclose(cursor.directory().openFile(mark.c_str(), "w"));
            ASSERT_TRUE(fs::exists(place / mark)) << path;
        }
    }
    while (cursor.leave() == 0) {
    }
    EXPECT_EQ(errno, EINVAL);
    EXPECT_TRUE(cursor.directory().isOpen());
}

TEST_F(Directory, AWalkMeetsWhatIsThereOnceAndDirectoriesFirst) {
    kit::Random random;
    tree.mkdir("top");
    tree::grow(tree, "top", random, 3);
    std::set<std::string> expected, met;
    for (fs::recursive_directory_iterator it(tree.path("top")), end; it != end; ++it) {
        expected.insert(fs::relative(it->path(), tree.path("top")).generic_string());
        if (it->path().filename() == "sub" && it->is_directory())
            it.disable_recursion_pending();
    }
    KazTreeCursor cursor(top.openDirectory("top"));
    EXPECT_EQ(cursor.walk([&](const KazDirectoryEntry& entry) {
        std::string path = cursor.getPath().getValue();
        for (char& c : path)
            c = c == '\\' ? '/' : c;
        EXPECT_TRUE(path.empty() || met.count(path) > 0) << path << " before what is in it";
        EXPECT_TRUE(met.insert((path.empty() ? "" : path + "/") + entry.name.getValue()).second);
        return entry.name != "sub";
    }),
              0);
    EXPECT_EQ(met, expected);
    EXPECT_EQ(cursor.getDepth(), 0);
}

TEST_F(Directory, AStampTellsWhetherItsProcessRuns) {
    const std::string own = kazProcessStamp().getValue();
    ASSERT_FALSE(own.empty());
    EXPECT_EQ(kazIsRunning(own.c_str()), 1);
    EXPECT_EQ(kazIsRunning((own + "0").c_str()), 0) << "another process of that number";
    for (const std::string& text : {std::string(), std::string("x"), "elsewhere" + own,
                                    own.substr(0, own.rfind(' ')), std::string("a -1 b")})
        EXPECT_EQ(kazIsRunning(text.c_str()), -1) << text;
    EXPECT_EQ(kazIsRunning(nullptr), -1);
}

} // namespace
