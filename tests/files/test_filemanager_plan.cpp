// SPDX-License-Identifier: Apache-2.0
// A plan changes nothing, and the copy that follows does exactly what it says: over random
// trees, among all that can be in the way.
#include "kit/random.h"
#include "manager.h"
#include "testkit/alloc_failure.h"
#include "tools/files/tifiles.h"
#include "tree.h"

namespace {

using namespace manager_test;
namespace fs = std::filesystem;

struct Planned {
    std::vector<KazPlannedAction> actions;
    bool good = false;

    static void take(const KazPlannedAction& action, void* data) {
        static_cast<Planned*>(data)->actions.push_back(action);
    }
    int count(KazPlannedAction::Kind kind) const {
        return static_cast<int>(
            std::count_if(actions.begin(), actions.end(),
                          [kind](const KazPlannedAction& action) { return action.kind == kind; }));
    }
};

std::string hostPath(const KazString& native) {
    return kazHostPath(native).getValue();
}

/// What a tree looks like once the plan is carried out.
tree::Snapshot applied(tree::Snapshot tree, const Planned& planned, const std::string& top) {
    for (const KazPlannedAction& action : planned.actions) {
        const std::string name =
            fs::path(hostPath(action.target)).generic_string().substr(top.size() + 1);
        const fs::path source = hostPath(action.source);
        if (action.kind == KazPlannedAction::Make)
            tree[name] = "dir";
        else if (action.kind == KazPlannedAction::Copy || action.kind == KazPlannedAction::Replace)
            tree[name] = tree::describe(fs::is_symlink(source) ? fs::canonical(source) : source);
    }
    return tree;
}

/// The names at which two trees differ, each with the beginning of what is there.
std::string difference(const tree::Snapshot& is, const tree::Snapshot& planned) {
    std::vector<tree::Snapshot::value_type> different;
    std::set_symmetric_difference(is.begin(), is.end(), planned.begin(), planned.end(),
                                  std::back_inserter(different));
    std::string text;
    for (const auto& [name, what] : different)
        text += name + ": " + what.substr(0, 20) + "\n";
    return text;
}

/// All that a walk may meet, files of another time included.
void fill(const moxkit::TempTree& tree, const std::string& dir, moxkit::Random& random, int depth) {
    tree.mkdir(dir);
    tree::grow(tree, dir, random, depth);
    std::error_code error;
    for (const char* name : {"a", "link", "sub", "tmp.txt"})
        if (random.oneIn(4)) {
            const std::string target = random.oneIn(2) ? "b.txt" : random.oneIn(2) ? "." : "none";
            fs::create_symlink(target, tree.path(dir + "/" + name), error); // if it is free
        }
}

void makeAllOld(const std::string& top, moxkit::Random& random) {
    for (const auto& entry : fs::recursive_directory_iterator(top))
        if (fs::is_directory(entry.symlink_status())) {
            makeOld(entry.path().string());
        } else if (fs::is_regular_file(entry.symlink_status())) {
            if (random.oneIn(5))
                setAge(entry.path().string(), std::chrono::hours(2)); // a clash
            else
                makeOld(entry.path().string());
        }
}

TEST_F(FileManager, TheCopyDoesWhatThePlanSays) {
    kit::Random random;
    int seen[KazPlannedAction::Fail + 1] = {};
    for (int turn = 0; turn < 12; ++turn) {
        const std::string place = "turn" + std::to_string(turn);
        const std::string destination = place + (random.oneIn(6) ? "/src/inner" : "/dest");
        fill(tree, place + "/src", random, 1);
        fill(tree, destination + (random.oneIn(2) ? "/src" : ""), random, 1);
        makeAllOld(tree.path(place), random);
        KazFileManager manager(random.oneIn(5) ? (tree.native(place + "/src") + "\\.").c_str()
                                               : tree.native(place + "/src").c_str());
        if (random.oneIn(3))
            manager.setExclusion("sub");
        const char* const pattern = random.oneIn(3) ? "*.txt" : random.oneIn(3) ? "s*" : "*";
        const bool recursive = !random.oneIn(4), makeTop = random.oneIn(2);
        const KazString into = tree.native(destination).c_str();
        const std::string top = tree.path(place);
        SCOPED_TRACE(place + " " + pattern + (recursive ? " recursive" : "") +
                     (makeTop ? " top" : ""));

        const tree::Snapshot before = tree::snapshot(top);
        Planned planned;
        planned.good = manager.plan(into, makeTop ? "*" : pattern, recursive, makeTop,
                                    Planned::take, &planned);
        ASSERT_EQ(difference(tree::snapshot(top), before), "");
        const KazString errors = manager.getErrors();
        const tree::Snapshot expected = applied(before, planned, top);
        for (int kind = 0; kind <= KazPlannedAction::Fail; ++kind)
            seen[kind] += planned.count(static_cast<KazPlannedAction::Kind>(kind));

        const bool good =
            makeTop ? manager.copy(into, recursive) : manager.copy(into, pattern, recursive);
        ASSERT_EQ(difference(tree::snapshot(top), expected), "");
        EXPECT_EQ(good, planned.good);
        EXPECT_EQ(errorsOf(manager), namesIn(errors));
        EXPECT_EQ(good, planned.count(KazPlannedAction::Fail) == 0 &&
                            planned.count(KazPlannedAction::Clash) == 0);
    }
    for (const int count : seen)
        EXPECT_GT(count, 0) << "a kind of action that nothing here leads to";
}

TEST_F(FileManager, APlanThatRunsOutOfMemoryLeavesTheManagerUsable) {
    tree.write("src/a", "a");
    tree.write("src/sub/b", "b");
    tree.mkdir("dest");
    KazFileManager manager(tree.native("src").c_str());
    Planned planned;
    const KazString into = tree.native("dest").c_str();
    const long points = moxkit::sweepAllocations(
        [&] {
            manager.plan(
                into, "*", true, true, [](const KazPlannedAction&, void*) {}, nullptr);
        },
        [&] {
            planned.actions.clear();
            EXPECT_TRUE(manager.plan(into, "*", true, true, Planned::take, &planned));
            EXPECT_EQ(planned.actions.size(), 4u);
        });
    EXPECT_GT(points, 10);
    EXPECT_FALSE(tree.exists("dest/src"));
}

} // namespace
