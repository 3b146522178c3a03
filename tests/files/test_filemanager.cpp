// The file manager against a model of the file tree, and against everything
// that can go wrong on a disk.
#include "tools/files/KazFileManager.h"

#include "kit/alloc_failure.h"
#include "kit/director.h"
#include "kit/random.h"
#include "kit/temp_tree.h"
#include "tree.h"

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <fnmatch.h>
#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <string>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <utime.h>

namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;
using Messages = std::vector<std::string>;

/// The failure list as a set; only for names without line ends.
Names errorsOf(const KazFileManager& manager) {
    Names result;
    std::istringstream lines(manager.getErrors().getValue());
    for (std::string line; std::getline(lines, line);)
        result.insert(line);
    return result;
}

Messages sorted(Messages messages) {
    std::sort(messages.begin(), messages.end());
    return messages;
}

/// A target that is older than any copy of this test.
void makeOld(const std::string& path) {
    const utimbuf times{1000, 1000};
    ASSERT_EQ(::utime(path.c_str(), &times), 0);
}

/// Which entries a walk visits, told by path below the root: matches on every
/// level and is not excluded.
struct Selection {
    std::string pattern = "*";
    Names excluded;
    bool recursive = true;

    bool takes(const std::string& path) const {
        const fs::path parts(path);
        const auto depth = std::distance(parts.begin(), parts.end());
        return (recursive || depth == 1) &&
               std::all_of(parts.begin(), parts.end(), [&](const fs::path& part) {
                   return excluded.count(part.string()) == 0 &&
                          ::fnmatch(pattern.c_str(), part.c_str(), FNM_NOESCAPE) == 0;
               });
    }
};

tree::Snapshot expectedCopy(const tree::Snapshot& source, const Selection& selection) {
    tree::Snapshot result;
    for (const auto& [path, what] : source) {
        if (selection.takes(path) && (selection.recursive || what != "dir"))
            result[path] = what;
    }
    return result;
}

Selection randomSelection(kit::Random& random) {
    const std::vector<std::string> patterns = {"*", "*.txt", "?", "*.*", "[ab]*", "*s*", "~"};
    Selection selection;
    selection.pattern = patterns[static_cast<std::size_t>(random.below(7))];
    for (const std::string& name : tree::awkwardNames()) {
        if (random.oneIn(6))
            selection.excluded.insert(name);
    }
    selection.recursive = !random.oneIn(4);
    return selection;
}

/// In the library "[" is a plain character and "*.*" means everything.
Selection forModel(Selection selection) {
    if (selection.pattern == "*.*")
        selection.pattern = "*";
    if (selection.pattern == "[ab]*")
        selection.pattern = "[[]ab]*";
    return selection;
}

void exclude(KazFileManager& manager, const Selection& selection) {
    for (const std::string& name : selection.excluded)
        manager.setExclusion(name.c_str());
}

class FileManager : public testing::Test {
protected:
    kit::RecordingDirector director;
};

TEST_F(FileManager, CopiesWhatTheModelSelects) {
    SCOPED_TRACE(kit::seedText());
    kit::Random random(kit::seed());
    for (int round = 0; round < 6; ++round) {
        const kit::TempTree tree;
        tree.mkdir("src");
        tree.mkdir("dst");
        tree::grow(tree, "src", random, 2);
        const tree::Snapshot source = tree::snapshot(tree.path("src"));
        const Selection selection = randomSelection(random);
        KazFileManager manager(tree.native("src").c_str());
        exclude(manager, selection);
        ASSERT_TRUE(manager.copy(tree.native("dst").c_str(), selection.pattern.c_str(),
                                 selection.recursive));
        ASSERT_TRUE(manager.getErrors().isEmpty());
        ASSERT_EQ(tree::snapshot(tree.path("dst")), expectedCopy(source, forModel(selection)))
            << selection.pattern;
        ASSERT_EQ(tree::snapshot(tree.path("src")), source);
    }
}

TEST_F(FileManager, DestroysWhatTheModelSelects) {
    SCOPED_TRACE(kit::seedText());
    kit::Random random(kit::seed() + 1);
    for (int round = 0; round < 6; ++round) {
        const kit::TempTree tree;
        tree.mkdir("src");
        tree::grow(tree, "src", random, 2);
        const Selection selection = randomSelection(random);
        const Selection model = forModel(selection);
        tree::Snapshot expected = tree::snapshot(tree.path("src"));
        std::erase_if(expected, [&](const auto& entry) {
            return model.takes(entry.first) && entry.second != "dir";
        });
        // A directory goes when it is selected and nothing is left in it.
        for (auto it = expected.end(); selection.recursive && it != expected.begin();) {
            --it;
            const std::string below = it->first + "/";
            const bool empty = std::none_of(expected.begin(), expected.end(), [&](const auto& e) {
                return e.first.rfind(below, 0) == 0;
            });
            if (it->second == "dir" && model.takes(it->first) && empty)
                it = expected.erase(it);
        }
        KazFileManager manager(tree.native("src").c_str());
        exclude(manager, selection);
        manager.destroy(selection.pattern.c_str(), selection.recursive);
        ASSERT_EQ(tree::snapshot(tree.path("src")), expected) << selection.pattern;
    }
}

TEST_F(FileManager, CommentsOnEachStep) {
    const kit::TempTree tree;
    tree.write("src/50%s", "x");
    tree.write("src/skip", "x");
    tree.write("src/sub/in", "x");
    tree.write("dst/src/clash", "x");
    tree.write("src/clash", "y");
    const std::string src = tree.native("src");
    const std::string dst = tree.native("dst");
    KazFileManager manager(src.c_str());
    for (const char* name : {"skip", "not clash", "inner"})
        manager.setExclusion(name);
    manager.setVerbose(true);
    {
        // In the future, so that it counts as written by this copy.
        const utimbuf later{std::time(nullptr) + 1000, std::time(nullptr) + 1000};
        ASSERT_EQ(::utime(tree.path("dst/src/clash").c_str(), &later), 0);
        EXPECT_FALSE(manager.copy(dst.c_str(), true));
        ASSERT_FALSE(director.messages.empty());
        EXPECT_EQ(director.messages[0], "Starting copy from '" + src + "' to '" + dst + "\\src'.");
        EXPECT_EQ(sorted(director.messages),
                  sorted({"Starting copy from '" + src + "' to '" + dst + "\\src'.",
                          "Starting copy from '" + src + "\\sub' to '" + dst + "\\src\\sub'.",
                          "Copied '50%s'.", "Copied 'in'.", "Skipping 'skip'.",
                          "Filesystem naming clash on 'clash'.", "Failed to copy 'clash'."}));
        EXPECT_EQ(manager.getErrors(), (src + "\\clash").c_str());
        EXPECT_EQ(tree.read("dst/src/clash"), "x");
    }
    {
        director.messages.clear();
        EXPECT_TRUE(manager.destroy(true)); // the excluded entry keeps the root
        EXPECT_EQ(
            sorted(director.messages),
            sorted({"Deleted '" + src + "\\50%s'.", "Deleted '" + src + "\\clash'.",
                    "Deleted '" + src + "\\sub\\in'.", "Deleted directory '" + src + "\\sub'.",
                    "Failed to delete directory '" + src + "'."}));
        EXPECT_EQ(manager.getErrors(), src.c_str());
        EXPECT_TRUE(tree.exists("src/skip"));
    }
    {
        director.messages.clear();
        manager.clearExclusions();
        EXPECT_TRUE(manager.destroy(true));
        EXPECT_EQ(director.messages, (Messages{"Deleted '" + src + "\\skip'."}));
        EXPECT_TRUE(manager.getErrors().isEmpty());
        EXPECT_FALSE(tree.exists("src"));
    }
}

TEST_F(FileManager, ReplacesOlderTargetsOnly) {
    const kit::TempTree tree;
    tree.write("src/f", "new");
    tree.write("dst/f", "an older and longer text");
    makeOld(tree.path("dst/f"));
    KazFileManager manager(tree.native("src").c_str());
    EXPECT_TRUE(manager.copy(tree.native("dst").c_str(), "*", true));
    EXPECT_EQ(tree.read("dst/f"), "new");
    EXPECT_FALSE(manager.copy(tree.native("dst").c_str(), "*", true)); // the same second
    EXPECT_EQ(director.messages, Messages{"Failed to copy 'f'."});
}

TEST_F(FileManager, WhatCannotBeCopiedIsListed) {
    const tree::PlainUser user;
    const kit::TempTree tree;
    const auto path = [&](const char* name) { return tree.path(std::string("src/") + name); };
    tree.write("src/good", "x");
    tree.write("src/secret", "x");
    tree.write("src/closed/in", "x");
    tree.write("src/..\\..\\evil", "x");
    tree.write("target", "behind a link");
    fs::permissions(path("secret"), fs::perms::none);
    fs::permissions(path("closed"), fs::perms::none);
    fs::create_symlink("nowhere", path("dangling"));
    fs::create_directory_symlink("..", path("loop"));
    fs::create_symlink("../target", path("link"));
    ASSERT_EQ(::mkfifo(path("fifo").c_str(), 0600), 0);
    tree.mkdir("dst");

    KazFileManager manager(tree.native("src").c_str());
    EXPECT_FALSE(manager.copy(tree.native("dst").c_str(), true));
    Names expected;
    Messages messages;
    for (const std::string name :
         {"secret", "closed", "dangling", "loop", "fifo", "..\\..\\evil"}) {
        expected.insert(tree.native("src") + "\\" + name);
        messages.push_back("Failed to copy '" + name + "'.");
    }
    EXPECT_EQ(errorsOf(manager), expected);
    EXPECT_EQ(sorted(director.messages), sorted(messages));
    EXPECT_EQ(tree.read("dst/src/good"), "x");
    EXPECT_EQ(tree.read("dst/src/link"), "behind a link");
    EXPECT_FALSE(fs::is_symlink(tree.path("dst/src/link")));
    const tree::Snapshot all = tree::snapshot(tree.path("dst"));
    EXPECT_EQ(all.size(), 4u); // src, closed, good, link: nothing half done
    EXPECT_FALSE(tree.exists("evil"));
    fs::permissions(path("closed"), fs::perms::all);
}

TEST_F(FileManager, WhatCannotBeDeletedIsListed) {
    const tree::PlainUser user;
    const kit::TempTree tree;
    tree.write("src/fixed/in", "x");
    tree.write("src/good", "x");
    tree.write("src/..\\victim", "x");
    tree.write("victim", "x");
    tree.write("outside/in", "x");
    fs::create_directory_symlink("../outside", tree.path("src/link"));
    fs::permissions(tree.path("src/fixed"), fs::perms::owner_read | fs::perms::owner_exec);
    const std::string src = tree.native("src");
    KazFileManager manager(src.c_str());
    EXPECT_FALSE(manager.destroy(true));
    EXPECT_EQ(errorsOf(manager),
              (Names{src + "\\fixed\\in", src + "\\fixed", src + "\\..\\victim"}));
    EXPECT_TRUE(tree.exists("victim"));
    EXPECT_TRUE(tree.exists("outside/in"));
    EXPECT_FALSE(tree.exists("src/good"));
    EXPECT_FALSE(tree.exists("src/link"));
    fs::permissions(tree.path("src/fixed"), fs::perms::owner_all);
}

TEST_F(FileManager, MissingPlaces) {
    const kit::TempTree tree;
    tree.write("src/f", "x");
    const std::string missing = tree.native("missing");
    KazFileManager manager(tree.native("src").c_str());
    for (const std::string& dest : {missing, std::string("C:\\x"), std::string("\\\\srv\\share")}) {
        EXPECT_FALSE(manager.copy(dest.c_str(), true)) << dest;
        EXPECT_EQ(errorsOf(manager), (Names{tree.native("src") + "\\f"}));
    }
    EXPECT_FALSE(tree.exists("missing"));
    KazFileManager nothing(missing.c_str());
    EXPECT_FALSE(nothing.copy(tree.native("src").c_str(), "*", true));
    EXPECT_EQ(errorsOf(nothing), Names{missing});
    EXPECT_TRUE(nothing.destroy(true)); // nothing in it, and it could not be removed
    EXPECT_EQ(errorsOf(nothing), Names{missing});
    EXPECT_TRUE(nothing.destroy("*", true));
    EXPECT_TRUE(nothing.getErrors().isEmpty());
}

TEST_F(FileManager, CopyIntoItselfEnds) {
    const kit::TempTree tree;
    tree.write("a/f", "x");
    tree.write("a/b/g", "y");
    KazFileManager manager(tree.native("a").c_str());
    EXPECT_FALSE(manager.copy(tree.native("a/b").c_str(), true));
    EXPECT_EQ(errorsOf(manager), (Names{tree.native("a/b/a")}));
    EXPECT_EQ(tree.read("a/b/a/f"), "x");
    EXPECT_EQ(tree.read("a/b/a/b/g"), "y");
    // Onto itself: nothing is lost, every file is a failure.
    makeOld(tree.path("a/f"));
    EXPECT_FALSE(manager.copy(tree.native("a").c_str(), "f", false));
    EXPECT_EQ(errorsOf(manager), (Names{tree.native("a/f")}));
    EXPECT_EQ(tree.read("a/f"), "x");
}

TEST_F(FileManager, PatternsThatLeadElsewhereEnd) {
    const kit::TempTree tree;
    tree.write("a/s/one", "x");
    tree.mkdir("a/s/back\\slash"); // passed over like any directory
    tree.write("a/s/t/two", "x");
    tree.mkdir("dst");
    const std::string dst = tree.native("dst");
    KazFileManager manager(tree.native("a").c_str());
    EXPECT_TRUE(manager.copy(dst.c_str(), "s\\*", false));
    EXPECT_EQ(tree.read("dst/one"), "x");
    EXPECT_TRUE(manager.copy(dst.c_str(), "missing\\*", true));
    EXPECT_FALSE(manager.copy(dst.c_str(), (tree.native("a") + "\\*").c_str(), true));
    EXPECT_TRUE(manager.destroy("C:\\*", true));
    tree.write("a/one:two", "x");
    EXPECT_TRUE(manager.destroy("one:*", true));
    EXPECT_FALSE(tree.exists("a/one:two"));
    EXPECT_TRUE(tree.exists("a/s/t/two"));
}

TEST_F(FileManager, StaysInsideTheDestination) {
    const kit::TempTree tree;
    tree.write("src/sub/f", "x");
    tree.write("src/file", "x");
    tree.write("outside/file", "untouched");
    makeOld(tree.path("outside/file"));
    tree.mkdir("dst/src");
    fs::create_directory_symlink(tree.path("outside"), tree.path("dst/src/sub"));
    fs::create_symlink(tree.path("outside/file"), tree.path("dst/src/file"));
    KazFileManager manager(tree.native("src").c_str());
    EXPECT_FALSE(manager.copy(tree.native("dst").c_str(), true));
    EXPECT_EQ(errorsOf(manager), (Names{tree.native("src/sub/f")}));
    EXPECT_EQ(tree.read("outside/file"), "untouched");
    EXPECT_FALSE(tree.exists("outside/f"));
    EXPECT_EQ(tree.read("dst/src/file"), "x"); // the link was replaced
}

TEST_F(FileManager, RootNamesThatAreNone) {
    const kit::TempTree tree;
    tree.write("src/in/f", "x");
    for (const char* root : {"src/in/", "src/in/.", "src/in/../in/.", "src/in/deep/.."}) {
        tree.mkdir("src/in/deep");
        const kit::TempTree dst;
        KazFileManager manager(tree.native(root).c_str());
        EXPECT_TRUE(manager.copy(dst.native("new").c_str(), true)) << root;
        EXPECT_EQ(dst.read("new/f"), "x") << root;
    }
}

/// Deletes a file when the manager first speaks of another.
class Thief : public kit::RecordingDirector {
public:
    explicit Thief(std::string dir) : dir_(std::move(dir)) {}

protected:
    void doPrintMsg(const char* format, va_list args) override {
        RecordingDirector::doPrintMsg(format, args);
        if (messages.back().rfind("Copied", 0) == 0 || messages.back().rfind("Deleted", 0) == 0) {
            std::error_code ignored;
            fs::remove_all(dir_, ignored);
        }
    }

private:
    std::string dir_;
};

TEST_F(FileManager, FilesThatVanishMeanwhileAreListed) {
    const kit::TempTree tree;
    tree.mkdir("dst");
    const auto refill = [&] {
        tree.write("src/a", "x");
        tree.write("src/b", "x");
        tree.mkdir("src/c");
    };
    Thief thief(tree.path("src"));
    KazFileManager manager(tree.native("src").c_str());
    manager.setVerbose(true);
    refill();
    EXPECT_FALSE(manager.copy(tree.native("dst").c_str(), true));
    EXPECT_FALSE(manager.getErrors().isEmpty());
    refill();
    EXPECT_FALSE(manager.destroy(true));
    EXPECT_FALSE(manager.getErrors().isEmpty());
}

/// While a subdirectory is copied, writes the parent's targets that are still to
/// come, and lets the clock move on to the next second.
class Rival : public kit::RecordingDirector {
public:
    explicit Rival(const kit::TempTree& tree) : tree_(tree) {}
    int written = 0;

protected:
    void doPrintMsg(const char* format, va_list args) override {
        RecordingDirector::doPrintMsg(format, args);
        if (messages.size() == 1 || messages.back().rfind("Starting copy", 0) != 0)
            return;
        for (char name = 'a'; name <= 't'; ++name) {
            const std::string target = std::string("dst/src/") + name;
            if (!tree_.exists(target)) {
                tree_.write(target, "rival");
                ++written;
            }
        }
        for (const std::time_t now = std::time(nullptr); std::time(nullptr) == now;)
            ::usleep(1000);
    }

private:
    const kit::TempTree& tree_;
};

TEST_F(FileManager, ClashesCountFromTheStartOfTheirOwnDirectory) {
    const kit::TempTree tree;
    for (char name = 'a'; name <= 't'; ++name)
        tree.write(std::string("src/") + name, "source");
    for (const char* dir : {"src/D", "src/E"})
        tree.mkdir(dir);
    tree.mkdir("dst");
    Rival rival(tree);
    KazFileManager manager(tree.native("src").c_str());
    manager.setVerbose(true);
    manager.copy(tree.native("dst").c_str(), true);
    ASSERT_GT(rival.written, 0);
    EXPECT_EQ(errorsOf(manager).size(), static_cast<std::size_t>(rival.written));
}

TEST_F(FileManager, DeepTreesEndInTheListWhenHandlesRunOut) {
    const kit::TempTree tree;
    std::string deep = "src";
    for (int i = 0; i < 60; ++i)
        deep += "/d";
    tree.write(deep + "/f", "x");
    tree.mkdir("dst");
    rlimit old{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &old), 0);
    const rlimit few{60, old.rlim_max};
    KazFileManager manager(tree.native("src").c_str());
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    const bool copied = manager.copy(tree.native("dst").c_str(), true);
    const KazString errors = manager.getErrors();
    const bool removed = manager.destroy(true);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &old), 0);
    EXPECT_FALSE(copied);
    EXPECT_FALSE(errors.isEmpty());
    EXPECT_FALSE(removed);
    EXPECT_TRUE(tree.exists(deep + "/f"));
    EXPECT_TRUE(manager.copy(tree.native("dst").c_str(), "*", true));
    EXPECT_EQ(tree.read("dst" + deep.substr(3) + "/f"), "x");
}

TEST_F(FileManager, FailedAllocationsLeaveWholeTargetsOrNone) {
    const kit::TempTree tree;
    tree.write("src/small", "text");
    tree.write("src/sub/large", std::string(100000, 'x'));
    tree.write("src/old", "new");
    tree.write("old", "old");
    const tree::Snapshot source = tree::snapshot(tree.path("src"));
    KazFileManager manager(tree.native("src").c_str());
    const KazString dst = tree.native("dst").c_str();
    const auto prepare = [&] {
        fs::remove_all(tree.path("dst"));
        tree.write("dst/src/old", "old");
        makeOld(tree.path("dst/src/old"));
    };
    prepare();
    bool copied = false;
    const long points = kit::sweepAllocations(
        [&] { copied = manager.copy(dst, true); },
        [&] {
            for (const auto& [path, what] : tree::snapshot(tree.path("dst/src"))) {
                ASSERT_EQ(source.count(path), 1u) << path;
                ASSERT_TRUE(what == source.at(path) || what == tree::describe(tree.path("old")));
            }
            prepare();
        });
    EXPECT_GT(points, 5);
    EXPECT_TRUE(copied);
    EXPECT_EQ(tree::snapshot(tree.path("dst/src")), source);
    EXPECT_EQ(tree::snapshot(tree.path("src")), source);
}

TEST_F(FileManager, FullDiskLeavesWholeTargetsOrNone) {
    const kit::TempTree tree;
    tree.mkdir("disk");
    const std::string disk = tree.path("disk");
    if (::mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=256k") != 0)
        GTEST_SKIP() << "mounting a small file system needs privileges";
    tree.write("src/small", "fits");
    tree.write("src/large", std::string(1 << 20, 'x'));
    tree.write("src/medium", std::string(60000, 'x'));
    tree.write("disk/src/large", "as it was");
    makeOld(disk + "/src/large");
    tree.write("disk/src/filler", std::string(200 * 1024, 'f'));
    KazFileManager manager(tree.native("src").c_str());
    EXPECT_FALSE(manager.copy(tree.native("disk").c_str(), true));
    EXPECT_EQ(errorsOf(manager), (Names{tree.native("src/large"), tree.native("src/medium")}));
    const tree::Snapshot after = tree::snapshot(disk);
    ASSERT_EQ(::umount(disk.c_str()), 0);
    EXPECT_EQ(after.size(), 4u); // src, small, large, filler
    EXPECT_NE(after.at("src/large").find(":as it was"), std::string::npos);
    EXPECT_NE(after.at("src/small").find(":fits"), std::string::npos);
}

} // namespace
