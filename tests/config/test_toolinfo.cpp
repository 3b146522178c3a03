#include "tools/config/toolinfo.h"

#include "kit/alloc_failure.h"
#include "kit/director.h"
#include "kit/env.h"
#include "kit/host.h"
#include "kit/process.h"
#include "kit/random.h"
#include "kit/temp_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

/// Runs a probe on a script; the answers must be as many as the commands.
Lines ask(const Lines& script, kit::RunOptions options = {},
          const std::string& program = "config_probe") {
    for (const std::string& command : script)
        options.input += command + "\n";
    const kit::Result result = kit::run({program}, options);
    EXPECT_EQ(result.status, 0) << result.err;
    Lines answers;
    std::istringstream out(result.out);
    for (std::string line; std::getline(out, line);)
        answers.push_back(line);
    EXPECT_EQ(answers.size(), script.size()) << result.out << result.err;
    answers.resize(script.size());
    return answers;
}

// ------------------------------------------------------------------ the model

/// The rules of the files, step by step and without a thought of speed.
class Model {
public:
    std::map<std::string, std::string> table, assigned, origin;
    bool overwrite = true;

    int defineLine(std::string line, const std::string& file = {}) {
        if (line.empty() || line[0] == '%' || line[0] == '.')
            return -1;
        while (!line.empty() && std::string("\n\r \t").find(line.back()) != std::string::npos)
            line.pop_back();
        const std::size_t equals = line.find('=');
        if (equals == std::string::npos)
            return -1;
        const std::string name = blanksOff(line.substr(0, equals));
        if (name.empty())
            return -1;
        bind(name, blanksOff(line.substr(equals + 1)), file);
        return 0;
    }

    void bind(const std::string& name, const std::string& value, const std::string& file) {
        if (overwrite || table.count(name) == 0) {
            table[name] = value;
            origin[name] = file;
        }
    }

    void readFile(const std::string& text, const std::string& name) {
        std::string line;
        for (std::size_t i = 0; i < text.size(); ++i) {
            line += text[i];
            if (text[i] == '\n' || line.size() == 5120 || i + 1 == text.size()) {
                defineLine(line.c_str(), name);
                line.clear();
            }
        }
    }

    std::string value(const std::string& name) const {
        const auto& map = assigned.count(name) != 0 ? assigned : table;
        const auto found = map.find(name);
        return found == map.end() || found->second.empty() ? "-" : "=" + found->second;
    }

    int assign(const std::string& name, const std::string& value) {
        if (!overwrite && (table.count(name) != 0 || assigned.count(name) != 0))
            return -1;
        assigned[name] = value;
        return 0;
    }

    std::string source(const std::string& name) const {
        if (assigned.count(name) != 0)
            return std::to_string(KazRunTime) + " ";
        if (table.count(name) == 0)
            return std::to_string(KazUndefined) + " ";
        const std::string& file = origin.at(name);
        return std::to_string(file.empty() ? KazDefined : KazFile) + " " + file;
    }

private:
    static std::string blanksOff(std::string text) {
        while (!text.empty() && text.front() == ' ')
            text.erase(0, 1);
        while (!text.empty() && text.back() == ' ')
            text.pop_back();
        return text;
    }
};

const char* const names[] = {"a", "b", "projdir", "Name", "name", "x y", "z\xe4", "ToolInfoPath"};

std::string randomName(kit::Random& rng) {
    return names[rng.below(std::size(names))];
}

/// One line, often an odd one. A chain link is left to the caller.
std::string randomLine(kit::Random& rng) {
    const std::string blanks = rng.text(2, "  \t");
    switch (rng.below(12)) {
    case 0:
        return std::string(rng.oneIn(2) ? "%" : ".") + randomName(rng) + "=comment";
    case 1:
        return rng.text(6, "ab =\t.%");
    case 2: // around the limit of a line, its rest being a line of its own
        return randomName(rng) + "=" +
               std::string(static_cast<std::size_t>(rng.between(5100, 5125)), 'v') +
               randomName(rng) + "=rest";
    case 3:
        return randomName(rng).insert(rng.oneIn(3) ? 1 : 0, rng.oneIn(3) ? 1 : 0, '\0') +
               "=before " + std::string(1, '\0') + "after=b";
    case 4:
        return randomName(rng) + "=";
    default:
        return blanks + randomName(rng) + rng.text(2, " \t") + "=" + rng.text(2, " ") +
               rng.text(8, "abc=%~$\\/\xff ") + rng.text(3, " \t\r");
    }
}

/// Files f0 to f13 that name one another; a probe with HOME there reads them.
class Chain {
public:
    explicit Chain(kit::Random& rng) : rng(rng) {
        for (int i = 0; i < count; ++i) {
            std::string text;
            for (int n = rng.below(12); n > 0; --n)
                text += (rng.oneIn(4) ? "ToolInfo=" + link(i) : randomLine(rng)) + ending();
            if (rng.below(8) != 0)
                text += "ToolInfo=" + link(i) + "\n";
            texts.push_back(text);
            tree.write("f" + std::to_string(i), text);
        }
    }

    std::string path(const std::string& file) const { return tree.path(file); }
    std::string native(const std::string& file) const { return tree.native(file); }

    /// Writes one more file, outside the chain, and gives its text.
    std::string addFile(const std::string& file) {
        std::string text;
        for (int n = rng.below(30); n > 0; --n)
            text += randomLine(rng) + "\n";
        tree.write(file, text);
        return text;
    }

    kit::RunOptions options() const {
        kit::RunOptions options;
        options.env = {{"HOME", tree.path()},
                       {"LC_ALL", "C"},
                       {"TOOLINFO", kit::unset},
                       {"ToolInfo", rng.oneIn(2) ? native("f0") : "~/f0"}};
        return options;
    }

    /// What the files say, read in their order.
    Model read() const {
        Model model;
        model.readFile(texts[0], native("f0"));
        model.bind("TI_locale", kit::localeOfC(), "");
        model.overwrite = false;
        std::string path = native("f0");
        std::vector<int> read{0};
        while (read.size() < 10) {
            const std::string name = resolved(model.table["ToolInfo"]);
            const int next = fileOf(name);
            if (next < 0 || std::count(read.begin(), read.end(), next) != 0)
                break;
            model.table.erase("ToolInfo");
            model.readFile(texts[static_cast<std::size_t>(next)], name);
            read.push_back(next);
            path += " " + name;
        }
        model.overwrite = true;
        model.bind("ToolInfo", native("f0"), "");
        model.bind("ToolInfoPath", path, "");
        return model;
    }

private:
    static constexpr int count = 14;

    /// Mostly onwards, so that long chains come about.
    std::string link(int from) {
        const int to = rng.oneIn(4) ? rng.below(count) : (from + 1) % count;
        const std::string name = "f" + std::to_string(to);
        const std::string others[] = {"~/" + name,
                                      "~\\" + name,
                                      tree.path(name),
                                      tree.path("./" + name),
                                      tree.path("missing"),
                                      tree.path(),
                                      ""};
        const auto choice = static_cast<std::size_t>(rng.below(20));
        return choice < std::size(others) ? others[choice] : tree.native(name);
    }

    std::string resolved(std::string value) const {
        if (value.starts_with('~'))
            value.replace(0, 1, tree.path());
        std::replace(value.begin(), value.end(), '/', '\\');
        return value;
    }

    static int fileOf(const std::string& value) {
        const std::size_t component = value.rfind('\\') + 1;
        if (component >= value.size() || value[component] != 'f')
            return -1;
        return std::stoi(value.substr(component + 1));
    }

    std::string ending() { return rng.oneIn(3) ? "\r\n" : "\n"; }

    kit::Random& rng;
    kit::TempTree tree;
    std::vector<std::string> texts;
};

TEST(ToolInfoFiles, ChainsAndLaterDefinitionsFollowTheModel) {
    SCOPED_TRACE(kit::seedText());
    kit::Random rng(kit::seed());
    for (int round = 0; round < 60; ++round) {
        Chain chain(rng);
        Model model = chain.read();
        Lines script, expected;
        const auto query = [&](const std::string& name) {
            script.insert(script.end(), {"cont\t" + name, "source\t" + name});
            expected.insert(expected.end(), {model.value(name), model.source(name)});
        };
        const auto command = [&](const std::string& text, int answer) {
            script.push_back(text);
            expected.push_back(std::to_string(answer));
        };
        command("init", 0);
        for (const char* name : {"ToolInfo", "ToolInfoPath", "TI_locale", "none"})
            query(name);
        for (int step = 0; step < 40; ++step) {
            const std::string name = randomName(rng);
            const std::string value = rng.text(3, "pq");
            switch (rng.below(7)) {
            case 0: { // a further file; the flag is then what it was
                const std::string file = "further" + std::to_string(step);
                const bool flag = rng.oneIn(2), before = model.overwrite;
                model.overwrite = flag;
                model.readFile(chain.addFile(file), chain.native(file));
                model.overwrite = before;
                command("user\t~/" + file + "\t" + std::to_string(flag), -1);
                command("user\t" + chain.path(file) + "\t" + std::to_string(flag), 0);
                break;
            }
            case 1:
                command("var\t " + name + " = " + value + " ",
                        model.defineLine(name + "=" + value));
                break;
            case 2:
                command("asg\t" + name + "\t" + value, model.assign(name, value));
                break;
            case 3: {
                const bool flag = rng.oneIn(2);
                command("overwrite\t" + std::to_string(flag), model.overwrite);
                model.overwrite = flag;
                break;
            }
            default:
                query(name);
            }
        }
        std::string all;
        std::map<std::string, std::string> everything = model.table;
        everything.insert(model.assigned.begin(), model.assigned.end());
        for (const auto& entry : everything)
            all += entry.first + ";";
        script.push_back("walk");
        expected.push_back(all);
        ASSERT_EQ(ask(script, chain.options()), expected) << "round " << round;
    }
}

TEST(ToolInfoFiles, VariablesOutliveMain) {
    kit::TempTree tree;
    kit::RunOptions options;
    options.env = {{"ToolInfo", tree.write("first", "x=1\n")}, {"PROBE_EDGE", tree.path("edge")}};
    EXPECT_EQ(ask({"cont\tedge"}, options), (Lines{"=early"}));
    EXPECT_EQ(tree.read("edge"), "=early");
    ask({}, options);
    EXPECT_EQ(tree.read("edge"), "=early");
    tree.write("first", "edge=file\n");
    ask({}, options); // reads the files after main only
    EXPECT_EQ(tree.read("edge"), "=file");
}

// ------------------------------------------------------ where the file is found

/// An installation of its own: library and probe in a "BIN" directory.
class Suite {
public:
    Suite() {
        tree.mkdir("Suite/BIN");
        tree.mkdir("home");
        kit::placeProgram("config_probe", tree.path("Suite/BIN"));
        options.env = {
            {"HOME", tree.path("home")}, {"ToolInfo", kit::unset}, {"TOOLINFO", kit::unset}};
    }

    std::string probe() const { return tree.path("Suite/BIN/config_probe"); }
    kit::Result start() { return kit::run({probe()}, withInput("init\n")); }
    kit::RunOptions withInput(const std::string& input) {
        kit::RunOptions result = options;
        result.input = input;
        return result;
    }
    Lines answers(const Lines& script) { return ask(script, options, probe()); }

    kit::TempTree tree;
    kit::RunOptions options;
};

TEST(ToolInfoSearch, LooksInTheHomeDirectoryThenInTheInstallation) {
    Suite suite;
    const auto found = [&suite] { return suite.answers({"cont\twho", "name"}); };

    EXPECT_EQ(suite.start().err, "ToolInfo environment variable is not set\n");
    EXPECT_EQ(suite.start().status, 1);

    suite.tree.write("Suite/ToolInfo", "who=root\n");
    EXPECT_EQ(found(), (Lines{"=root", "=" + suite.tree.native("Suite/ToolInfo")}));
    suite.tree.write("Suite/ToolInfo.W32NTX86", "who=platform\n");
    EXPECT_EQ(found(), (Lines{"=platform", "=" + suite.tree.native("Suite/ToolInfo.W32NTX86")}));
    // A directory is no candidate, nor is a device that would open.
    suite.tree.mkdir("home/ToolInfo");
    EXPECT_EQ(found()[0], "=platform");
    std::filesystem::remove(suite.tree.path("home/ToolInfo"));
    std::error_code ignored;
    std::filesystem::create_symlink("/dev/null", suite.tree.path("home/ToolInfo"), ignored);
    EXPECT_EQ(found()[0], "=platform");
    std::filesystem::remove(suite.tree.path("home/ToolInfo"));
    suite.tree.write("home/ToolInfo", "who=home\n");
    EXPECT_EQ(found(), (Lines{"=home", "=" + suite.tree.native("home/ToolInfo")}));

    // A variable is final, whatever else there is; one name beats the other.
    suite.tree.write("Suite/conf/extra", "who=TOOLINFO\n");
    suite.tree.write("home/mine", "who=ToolInfo\n");
    if (kit::hasDrives)
        suite.options.env.erase("ToolInfo"); // one variable there, whatever its case
    suite.options.env["TOOLINFO"] = "conf/extra";
    EXPECT_EQ(found(), (Lines{"=TOOLINFO", "=" + suite.tree.native("Suite/conf/extra")}));
    suite.options.env["ToolInfo"] = "~/mine";
    EXPECT_EQ(found(), (Lines{"=ToolInfo", "=" + suite.tree.native("home/mine")}));
    suite.options.env["ToolInfo"] = "~/none";
    EXPECT_EQ(suite.start().err, "Can't open ToolInfo file: ~/none,\n"
                                 "is ToolInfo environment variable set correctly?\n");
    EXPECT_EQ(suite.start().status, 1);
}

TEST(ToolInfoSearch, TheDirectoryAboveBinIsTheRoot) {
    Suite suite;
    const std::string suiteDir = suite.tree.native("Suite");
    EXPECT_EQ(suite.answers({"root", "bin"}), (Lines{"=" + suiteDir, "=" + suiteDir + "\\BIN"}));
    std::filesystem::rename(suite.tree.path("Suite/BIN"), suite.tree.path("Suite/tools"));
    const Lines moved =
        ask({"root", "bin"}, suite.options, suite.tree.path("Suite/tools/config_probe"));
    EXPECT_EQ(moved, (Lines{"=" + suiteDir.substr(0, suiteDir.find('\\') + 1),
                            "=" + suiteDir + "\\tools"}));
}

// --------------------------------------------------------------- in this process

/// The one fatal error is recorded and returns: the rest must work all the same.
class ToolInfo : public testing::Test {
protected:
    kit::TempTree tree;
    kit::ScopedEnv toolInfo{"ToolInfo", "/no/such/file"};
    kit::RecordingDirector director;
};

TEST_F(ToolInfo, GoesOnWithoutAFileWhenTheFatalErrorReturns) {
    EXPECT_EQ(TI_Vcont("anything"), nullptr);
    EXPECT_LE(director.fatals.size(), 1U);
    EXPECT_EQ(TI_Vinit(), 0);
    EXPECT_EQ(TI_V_set_overwrite(true), true);
    EXPECT_EQ(TI_Var("lone = value"), 0);
    EXPECT_STREQ(TI_Vcont("lone"), "value");
    EXPECT_LE(director.fatals.size(), 1U);
}

TEST_F(ToolInfo, RefusesWhatDefinesNothing) {
    for (const char* line : {"", "%x=1", ".x=1", "no sign", "=value", "  =value", "\n"})
        EXPECT_EQ(TI_Var(line), -1) << line;
    EXPECT_EQ(TI_Var(nullptr), -1);
    EXPECT_EQ(TI_Vasg(nullptr, "x"), -1);
    EXPECT_EQ(TI_V_user_file(nullptr, true), -1);
    EXPECT_EQ(TI_V_user_file(tree.path("missing").c_str(), true), -1);
    EXPECT_EQ(TI_V_user_file(tree.path().c_str(), true), -1);
    EXPECT_EQ(TI_V_user_file("/dev/null", true), -1);
    EXPECT_EQ(TI_Vcont(nullptr), nullptr);
    EXPECT_EQ(TI_EnvVcont(nullptr), nullptr);
    EXPECT_EQ(TI_SameEnvVcont(nullptr), nullptr);
}

TEST_F(ToolInfo, AFileIsReadWholeOrNotAtAll) {
    TI_Vcont("anything");
    std::string fresh, inForce = "-";
    const auto writeFile = [&] {
        fresh += '+';
        tree.write("file", "one=x\ntwo=" + fresh + "\none=" + fresh + "\n" + fresh + "=new\n");
    };
    TI_Var("one=-");
    TI_Var("two=-");
    writeFile();
    bool done = false;
    const auto read = [&] {
        done = false;
        done = TI_V_user_file(tree.path("file").c_str(), true) == 0;
    };
    const auto check = [&] {
        inForce = done ? fresh : inForce;
        EXPECT_EQ(TI_Vcont("one"), inForce);
        EXPECT_EQ(TI_Vcont("two"), inForce);
        EXPECT_EQ(TI_Vcont(fresh.c_str()) != nullptr, done);
        EXPECT_TRUE(TI_V_set_overwrite(true));
        writeFile();
    };
    EXPECT_GT(kit::sweepAllocations(read, check), 5);
    EXPECT_TRUE(done);
}

TEST_F(ToolInfo, TheEnvironmentComesBeforeEverything) {
    TI_Var("projdir=file");
    TI_Vasg("projdir", "assigned");
    EXPECT_STREQ(TI_EnvVcont("projdir"), "assigned");
    if (!kit::hasDrives) { // there a variable that is empty is none
        const kit::ScopedEnv variable("KAZ_PROJDIR", "");
        EXPECT_STREQ(TI_EnvVcont("projdir"), "");
        EXPECT_STREQ(TI_SameEnvVcont("projdir"), "assigned");
        EXPECT_EQ(TI_EnvVsource("projdir", nullptr), KazEnvironment);
    }
    const kit::ScopedEnv variable("projdir", "same");
    EXPECT_STREQ(TI_SameEnvVcont("projdir"), "same");
    EXPECT_EQ(TI_Vasg("projdir", nullptr), 0);
    EXPECT_EQ(TI_Vcont("projdir"), nullptr) << "an empty assignment hides the file";
}

TEST_F(ToolInfo, ExpandsTheHomeDirectoryOnly) {
    const std::string home = tree.native();
    {
        const kit::ScopedEnv variable("HOME", (tree.path() + "/").c_str());
        EXPECT_EQ(_TI_hm("~"), home + "\\");
        EXPECT_EQ(_TI_hm("~/"), home + "\\");
        EXPECT_EQ(_TI_hm("~\\a/b"), home + "\\a/b");
        EXPECT_EQ(_TI_hm("~//a"), home + "\\/a");
        for (const char* path : {"", "~user", "a~", "/~", "."})
            EXPECT_EQ(_TI_hm(path), path) << "the same pointer";
        EXPECT_STREQ(_TI_hm(nullptr), "");
        char* copy = const_cast<char*>(kazGetUserHomeDir());
        EXPECT_EQ(copy, home + "\\");
        std::free(copy);

        TI_Vasg("dir", "~/sub");
        EXPECT_EQ(TI_Vcont("dir"), home + "\\sub");
        TI_Var("dir2=~/sub");
        EXPECT_STREQ(TI_Vcont("dir2"), "~/sub") << "files are not expanded";

        const int length = static_cast<int>(home.size()) + 2;
        for (const int size : {length + 1, length, 0, -1}) {
            std::string buffer = "~/x" + std::string(500, '\0');
            TI_userdir(buffer.data(), size);
            EXPECT_EQ(buffer.c_str(), size > length ? home + "\\x" : "~/x") << size;
        }
    }
    kit::ScopedEnv none("HOME", "/no/such/directory");
    EXPECT_NE(std::string(_TI_hm("~\\x")).substr(0, 3), "\\no");
    kit::ScopedEnv top("HOME", "/");
    EXPECT_STREQ(_TI_hm("~/x"), "\\x");
    // An argument in the result's own buffer.
    tree.mkdir("~");
    const kit::ScopedEnv odd("HOME", "~");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(tree.path());
    EXPECT_STREQ(_TI_hm(_TI_hm("~/a/fairly/long/path/below/the/home/directory")),
                 "~\\a/fairly/long/path/below/the/home/directory");
    std::filesystem::current_path(before);
}

TEST_F(ToolInfo, ReadsYesAndNo) {
    const std::map<std::string, int> answers = {
        {"", -1},      {"  ", -1}, {"1", 1},     {"yes", 1},  {" ja", 1},  {"True", 1},
        {"t", 1},      {"on", 1},  {"\tON", 1},  {"one", -1}, {"onx", -1}, {"0", 0},
        {"No", 0},     {"n", 0},   {"FALSE", 0}, {"off", 0},  {"Off", 0},  {"offx", -1},
        {"maybe", -1}, {"2", -1},  {"\r\n1", 1}};
    for (const auto& [text, answer] : answers) {
        EXPECT_EQ(TI_yesorno(text.c_str(), false), answer > 0) << text;
        EXPECT_EQ(TI_yesorno(text.c_str(), true), answer != 0) << text;
        EXPECT_EQ(TI_yes(text.c_str()), answer != 0) << text;
        EXPECT_EQ(TI_no(text.c_str()), answer > 0) << text;
    }
    EXPECT_TRUE(TI_yes(nullptr));
    EXPECT_FALSE(TI_no(nullptr));
}

} // namespace
