// SPDX-License-Identifier: Apache-2.0
// The file manager against a model of the file tree, and against everything
// that can go wrong on a disk.
#include "tools/files/KazFileManager.h"

#include "kit/random.h"
#include "manager.h"
#include "testkit/alloc_failure.h"
#include "testkit/temp_tree.h"
#include "tree.h"

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace {

namespace fs = std::filesystem;
using namespace manager_test;

/// Which entries a walk visits: those that match on every level and are not
/// excluded.
struct Selection {
    const char* pattern;
    bool (*matches)(const std::string& name);
    Names excluded;
    bool recursive = true;

    bool takes(const std::string& path) const {
        const fs::path parts(path);
        return (recursive || std::distance(parts.begin(), parts.end()) == 1) &&
               std::all_of(parts.begin(), parts.end(), [&](const fs::path& part) {
                   return excluded.count(part.string()) == 0 && matches(part.string());
               });
    }
};

std::vector<Selection> selections() {
    const auto all = [](const std::string&) { return true; };
    const auto texts = [](const std::string& name) { return name.ends_with(".txt"); };
    const auto single = [](const std::string& name) { return name.size() == 1; };
    const auto withS = [](const std::string& name) { return name.find('s') != name.npos; };
    return {{"*", all, {}},
            {"*.*", all, {"keep.txt", "two\nlines", "~"}},
            {"*", all, {"sub"}, false},
            {"*.txt", texts, {}},
            {"?", single, {"a"}},
            {"*s*", withS, {}},
            {"~", [](const std::string& name) { return name == "~"; }, {}, false}};
}

/// Runs @p work(manager, tree, selection) for each selection on a tree of its own.
template <typename Work>
void forEachSelection(Work work) {
    kit::Random random;
    for (const Selection& selection : selections()) {
        const moxkit::TempTree tree;
        tree.mkdir("src");
        tree.mkdir("dst");
        tree::grow(tree, "src", random, 2);
        KazFileManager manager(tree.native("src").c_str());
        for (const std::string& name : selection.excluded)
            manager.setExclusion(name.c_str());
        work(manager, tree, selection);
    }
}

TEST_F(FileManager, CopiesWhatTheModelSelects) {
    forEachSelection([](KazFileManager& manager, const moxkit::TempTree& tree,
                        const Selection& selection) {
        const tree::Snapshot source = tree::snapshot(tree.path("src"));
        tree::Snapshot expected = source;
        std::erase_if(expected, [&](const auto& entry) {
            return !selection.takes(entry.first) || (entry.second == "dir" && !selection.recursive);
        });
        ASSERT_TRUE(
            manager.copy(tree.native("dst").c_str(), selection.pattern, selection.recursive));
        ASSERT_TRUE(manager.getErrors().isEmpty());
        ASSERT_EQ(tree::snapshot(tree.path("dst")), expected) << selection.pattern;
        ASSERT_EQ(tree::snapshot(tree.path("src")), source);
    });
}

TEST_F(FileManager, DestroysWhatTheModelSelects) {
    forEachSelection([](KazFileManager& manager, const moxkit::TempTree& tree,
                        const Selection& selection) {
        tree::Snapshot expected = tree::snapshot(tree.path("src"));
        // From the end: what is in a directory comes before the directory itself,
        // which goes when it is selected and nothing is left in it.
        for (auto it = expected.end(); it != expected.begin();) {
            --it;
            const auto next = std::next(it);
            const bool isDir = it->second == "dir";
            const bool holds = isDir && std::any_of(next, expected.end(), [&](const auto& entry) {
                                   return entry.first.starts_with(it->first + "/");
                               });
            if (selection.takes(it->first) && !holds && (!isDir || selection.recursive))
                it = expected.erase(it);
        }
        manager.destroy(selection.pattern, selection.recursive);
        ASSERT_EQ(tree::snapshot(tree.path("src")), expected) << selection.pattern;
    });
}

TEST_F(FileManager, CommentsOnEachStep) {
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
        setAge(tree.path("dst/src/clash"), std::chrono::seconds(1000));
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

TEST_F(FileManager, CommentsOnPlacesAsTheyWereGiven) {
    const std::string src = tree.mkdir("src") + "/", dst = tree.mkdir("dst");
    KazFileManager manager(src.c_str());
    manager.setVerbose(true);
    EXPECT_TRUE(manager.copy(dst.c_str(), "*", true));
    EXPECT_TRUE(manager.copy(dst.c_str(), true)); // composed with the root's name, if none
    EXPECT_EQ(director.messages,
              (Messages{"Starting copy from '" + src + "' to '" + dst + "'.",
                        "Starting copy from '" + src + "' to '" + tree.native("dst") + "'."}));
}

TEST_F(FileManager, ReplacesOlderTargetsOnly) {
    tree.write("src/f", "new");
    tree.write("dst/f", "an older and longer text");
    makeOld(tree.path("dst/f"));
    KazFileManager manager(tree.native("src").c_str());
    EXPECT_TRUE(manager.copy(tree.native("dst").c_str(), "*", true));
    EXPECT_EQ(tree.read("dst/f"), "new");
    EXPECT_FALSE(manager.copy(tree.native("dst").c_str(), "*", true)); // the same second
    EXPECT_EQ(director.messages, Messages{"Failed to copy 'f'."});
}

TEST_F(FileManager, MissingPlaces) {
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
    // A drive that is not there: on one that is, this would be the end of it.
    EXPECT_TRUE(manager.destroy(kit::hasDrives ? "Q:\\*" : "C:\\*", true));
    if (kit::isFileName("one:two")) {
        tree.write("a/one:two", "x");
        EXPECT_TRUE(manager.destroy("one:*", true));
        EXPECT_FALSE(tree.exists("a/one:two"));
    }
    EXPECT_TRUE(tree.exists("a/s/t/two"));
}

TEST_F(FileManager, RootNamesThatAreNone) {
    tree.write("src/in/f", "x");
    for (const char* root : {"src/in/", "src/in/.", "src/in/../in/.", "src/in/deep/.."}) {
        tree.mkdir("src/in/deep");
        const moxkit::TempTree dst;
        KazFileManager manager(tree.native(root).c_str());
        EXPECT_TRUE(manager.copy(dst.native("new").c_str(), true)) << root;
        EXPECT_EQ(dst.read("new/f"), "x") << root;
    }
}

/// While a subdirectory is copied, writes the parent's targets that are still to
/// come, and lets the clock move on to the next second.
class Rival : public moxkit::RecordingDirector {
public:
    explicit Rival(const moxkit::TempTree& tree) : tree_(tree) {}
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
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }

private:
    const moxkit::TempTree& tree_;
};

TEST_F(FileManager, ClashesCountFromTheStartOfTheirOwnDirectory) {
    for (char name = 'a'; name <= 't'; ++name)
        tree.write(std::string("src/") + name, "source");
    for (const char* dir : {"src/D1", "src/E1"})
        tree.mkdir(dir);
    tree.mkdir("dst");
    Rival rival(tree);
    KazFileManager manager(tree.native("src").c_str());
    manager.setVerbose(true);
    manager.copy(tree.native("dst").c_str(), true);
    ASSERT_GT(rival.written, 0);
    EXPECT_EQ(errorsOf(manager).size(), static_cast<std::size_t>(rival.written));
}

TEST_F(FileManager, FailedAllocationsLeaveWholeTargetsOrNone) {
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
    bool copied = false;
    for (const auto mode : {moxkit::FailAllocation::once, moxkit::FailAllocation::onward}) {
        prepare();
        const long points = moxkit::sweepAllocations(
            [&] { copied = manager.copy(dst, true); },
            [&] {
                for (const auto& [path, what] : tree::snapshot(tree.path("dst/src"))) {
                    ASSERT_EQ(source.count(path), 1u) << path;
                    ASSERT_TRUE(what == source.at(path) ||
                                what == tree::describe(tree.path("old")));
                }
                prepare();
            },
            mode);
        EXPECT_GT(points, 5);
    }
    EXPECT_TRUE(copied);
    EXPECT_EQ(tree::snapshot(tree.path("dst/src")), source);
    EXPECT_EQ(tree::snapshot(tree.path("src")), source);
}

} // namespace
