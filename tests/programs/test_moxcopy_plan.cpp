// SPDX-License-Identifier: Apache-2.0
// What "--plan" says, and the copy that follows: over random trees they agree.
#include "moxcopy.h"

#include "files/tree.h"
#include "kit/table.h"
#include "tools/files/KazFileManager.h"
#include "tools/formats/encode.h"

#include <cctype>
#include <cstdlib>
#include <sstream>

namespace {

using namespace moxcopy_test;

/// The lines of a plan by their first words: what follows them, and the sum at the end.
struct Foretold {
    std::map<std::string, std::set<std::string>> names;
    std::uintmax_t bytes = 0;
    std::string sum;
};

Foretold readPlan(const std::string& text) {
    Foretold plan;
    for (const std::string& line : kit::lines(text)) {
        const std::string word = line.substr(0, line.find(' '));
        std::string name = line.substr(word.size() + 1);
        if (word == "plan:") {
            plan.sum = line;
            continue;
        }
        if (word == "copy" || word == "replace") {
            plan.bytes += std::stoull(name.substr(name.rfind(' ')));
            name.resize(name.rfind(' '));
        }
        if (name.find(':') == 1) // a drive, which the names of the test do without
            name.erase(0, 2);
        EXPECT_TRUE(plan.names[word].insert(name).second) << line << " twice";
    }
    return plan;
}

std::string inLowerCase(std::string text) {
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

/// What is below a directory and around it, by the names that messages show.
tree::Snapshot shownSnapshot(const moxkit::TempTree& files, const std::string& top) {
    tree::Snapshot result;
    for (const auto& [name, what] : tree::snapshot(files.path(top)))
        result[kazPrintable((fs::path(files.path(top)) / name).make_preferred().string().c_str())
                   .getValue()] = what;
    return result;
}

class Plan : public MoxCopy {
protected:
    Plan() : MoxCopy(fs::is_directory("/dev/shm") ? "/dev/shm" : "") {}

    /// Marks files of the earlier copy, so that replaced ones are others whatever they hold.
    void markFiles(const std::string& top) {
        for (const auto& entry : fs::recursive_directory_iterator(tree.path(top)))
            if (fs::is_regular_file(entry.symlink_status()))
                std::ofstream(entry.path(), std::ios::app) << "of the earlier copy";
    }

    /// The plan of a copy, then the copy: @p seen gets the first words of the plan's lines.
    /// All that either changes is below @p top.
    void expectLaw(const std::string& top, const std::string& target,
                   std::vector<std::string> arguments, std::set<std::string>& seen);

    /// A name as the destination knows it.
    std::string named(const std::string& name) const {
        return isCaseless ? inLowerCase(name) : name;
    }
    tree::Snapshot snapshotOf(const std::string& top) const {
        tree::Snapshot result;
        for (const auto& [name, what] : shownSnapshot(tree, top))
            result[named(name)] = what;
        return result;
    }

    bool isCaseless = false;

    void makeTrees(const std::string& target, moxkit::Random& random) {
        tree.mkdir("plant/brewery");
        tree::grow(tree, "plant/brewery", random, 1);
        std::error_code error; // not everybody may make links everywhere
        for (const char* to : {"b.txt", "none", "."})
            if (random.oneIn(3))
                fs::create_symlink(to, tree.path(std::string("plant/brewery/to ") + to), error);
        if (random.oneIn(3))
            return;
        tree.mkdir(target + "/brewery");
        tree::grow(tree, target + "/brewery", random, 1);
        markFiles(target + "/brewery");
    }
};

void Plan::expectLaw(const std::string& top, const std::string& target,
                     std::vector<std::string> arguments, std::set<std::string>& seen) {
    std::vector<std::string> asked = arguments;
    asked.insert(asked.begin(), "--plan");
    const tree::Snapshot before = snapshotOf(top);
    const moxkit::Result said = copy(asked);
    EXPECT_EQ(snapshotOf(top), before);
    EXPECT_EQ(said.err, "");
    Foretold plan = readPlan(said.out);
    const auto planned = [&](const char* word) {
        std::set<std::string> names;
        for (const std::string& name : plan.names[word])
            names.insert(named(name));
        return names;
    };

    arguments.emplace_back("-Force");
    const moxkit::Result done = copy(arguments);
    EXPECT_EQ(done.status, said.status) << said.out << done.err;
    const std::string copyIs = named(
        kazPrintable(fs::path(tree.path(target)).make_preferred().string().c_str()).getValue() +
        std::string(1, static_cast<char>(fs::path::preferred_separator)) + "brewery");
    std::set<std::string> made, copied, replaced, kept;
    std::uintmax_t bytes = 0;
    for (const auto& [name, what] : snapshotOf(top)) {
        const auto old = before.find(name);
        const bool isIn = name.starts_with(copyIs);
        if (what == "dir") {
            if (old == before.end())
                made.insert(name);
        } else if (old == before.end() || old->second != what) {
            (old == before.end() ? copied : replaced).insert(name);
            bytes += what.size() - what.find(':') - 1;
        } else if (isIn) {
            kept.insert(name);
        }
    }
    EXPECT_EQ(planned("make"), made) << said.out;
    EXPECT_EQ(planned("copy"), copied) << said.out;
    EXPECT_EQ(planned("replace"), replaced) << said.out;
    for (const std::string& name : planned("keep"))
        EXPECT_TRUE(kept.contains(name)) << name;
    EXPECT_EQ(plan.bytes, bytes);
    std::ostringstream sum;
    const std::size_t failures = plan.names["fail"].size();
    sum << "plan: " << made.size() << " directories, " << copied.size() + replaced.size()
        << " files, " << bytes << " bytes; " << replaced.size() << " replaced, " << failures
        << " failures";
    EXPECT_EQ(plan.sum, sum.str());
    const auto told = [&](const std::string& text) {
        std::size_t count = 0;
        for (std::size_t at = 0; (at = done.err.find(text, at)) != text.npos; ++at)
            ++count;
        return count;
    };
    EXPECT_EQ(told("Not copied: "), failures) << said.out << done.err;
    for (const auto& [word, names] : plan.names)
        if (!names.empty())
            seen.insert(word);
}

TEST_F(Plan, TheCopyThatFollowsDoesWhatItSays) {
    kit::Random random;
    std::set<std::string> seen;
    for (int turn = 0; turn < 8; ++turn) {
        fs::remove_all(tree.path("plant"));
        const std::string target = "t" + std::to_string(turn) + "/in";
        makeTrees(target, random);
        std::vector<std::string> arguments{"-target", target};
        if (random.oneIn(3))
            arguments.insert(arguments.end(), {"-filter", "*t*"});
        if (random.oneIn(3))
            arguments.insert(arguments.end(), {"a", "none", "keep"});
        expectLaw("", target, arguments, seen);
    }
    EXPECT_EQ(seen, (std::set<std::string>{"make", "copy", "replace", "keep", "fail"}));
}

/// A destination that tells no names apart by case, for whoever may mount one.
class CaselessPlan : public Plan {
protected:
    void SetUp() override {
        const std::string image = "'" + tree.path("image") + "'", place = tree.mkdir("place");
        fs::resize_file(tree.write("image", ""), 8 << 20);
        if (std::system(("{ mkntfs -F -q -Q " + image + " && lowntfs-3g -o ignore_case " + image +
                         " '" + place + "'; } >'" + tree.path("log") + "' 2>&1")
                            .c_str()) != 0)
            GTEST_SKIP() << "lowntfs-3g cannot mount anything here";
        isCaseless = isMounted = true;
    }
    void TearDown() override {
        if (isMounted) {
            EXPECT_EQ(std::system(("umount '" + tree.path("place") + "'").c_str()), 0);
        }
    }

    /// Files and directories whose names differ in case alone, too.
    void grow(const std::string& top, moxkit::Random& random, int levels) {
        tree.mkdir(top);
        for (const std::string name : {"a", "A", "b", "B", "aB", "Ab", "AB"}) {
            if (random.oneIn(2))
                continue;
            if (levels > 0 && random.oneIn(2))
                grow(top + "/" + name, random, levels - 1);
            else
                tree.write(top + "/" + name, top + name);
        }
    }

    bool isMounted = false;
};

TEST_F(CaselessPlan, KnowsWhichNamesWillBeOne) {
    kit::Random random;
    std::set<std::string> seen;
    for (int turn = 0; turn < 10; ++turn) {
        fs::remove_all(tree.path("plant"));
        grow("plant/brewery", random, 2);
        const std::string target = "place/t" + std::to_string(turn);
        if (turn > 3) {
            for (const std::string name : {"a", "b", "ab", "own"})
                tree.write(target + "/brewery/" + name + (random.oneIn(2) ? "/ab" : ""), "earlier");
        }
        expectLaw("place", target, {"-target", target}, seen);
        fs::remove_all(tree.path(target)); // so that nothing there tells the next plan
    }
    EXPECT_EQ(seen, (std::set<std::string>{"make", "copy", "replace", "keep", "fail"}));
}

TEST_F(CaselessPlan, OfAnyTreeNamesTheClashes) {
    kit::Random random;
    for (int turn = 0; turn < 10; ++turn) {
        const std::string number = std::to_string(turn);
        grow("s" + number, random, 2);
        const std::string target = tree.mkdir("place/t" + number);
        KazFileManager manager(kazNativePath(tree.path("s" + number).c_str()));
        std::set<std::string> planned, written;
        const bool isGood = manager.plan(
            kazNativePath(target.c_str()), "*", true, false,
            [](const KazPlannedAction& action, void* names) {
                if (action.kind == KazPlannedAction::Make || action.kind == KazPlannedAction::Copy)
                    static_cast<std::set<std::string>*>(names)->insert(
                        inLowerCase(kazHostPath(action.target).getValue()));
                EXPECT_NE(action.kind, KazPlannedAction::Replace);
            },
            &planned);
        const KazString errors = manager.getErrors();
        EXPECT_EQ(manager.copy(kazNativePath(target.c_str()), "*", true), isGood);
        EXPECT_STREQ(manager.getErrors(), errors);
        for (const auto& [name, what] : tree::snapshot(target))
            written.insert(inLowerCase(target + "/" + name));
        EXPECT_EQ(planned, written);
        fs::remove_all(target);
    }
}

TEST_F(Plan, AsksNothingAndRefusesWhatTheCopyRefuses) {
    makeSystem();
    EXPECT_EQ(copy({"-target", "t"}).status, 0);
    const moxkit::Result again = copy({"-target", "t", "--plan"});
    EXPECT_EQ(again.status, 0);
    EXPECT_EQ(again.err, "");
    EXPECT_EQ(again.out.find("Overwrite"), again.out.npos);
    const moxkit::Result inside = copy({"-target", "plant/brewery", "--plan"});
    EXPECT_EQ(inside.status, 2);
    EXPECT_EQ(inside.out, "");
    EXPECT_EQ(runTool({program, "-p", "plant", "-s", "winery", "--plan"}).status, 1);
    tree.write("f/brewery", "in the way");
    EXPECT_EQ(copy({"-target", "f", "--plan"}).status, 1);
    EXPECT_EQ(copy({"-target", "f", "--plan", "--plan"}).status, 2);
    EXPECT_EQ(copy({"-target", "n", "-filter", "nothing*", "--plan"}).out,
              "plan: 0 directories, 0 files, 0 bytes; 0 replaced, 0 failures\n");
}

} // namespace
