// SPDX-License-Identifier: Apache-2.0
// Reports of projects against a model of what they hold.
#include "moxreport.h"

#include "kit/host.h"
#include "kit/random.h"

#include <chrono>
#include <filesystem>
#include <map>
#include <set>
#include <utility>

namespace {

using namespace moxreport_test;
namespace fs = std::filesystem;

/// Moments as seconds and as the report shows them.
const std::pair<int, const char*> moments[] = {{1000000000, "2001-09-09 01:46:40"},
                                               {1700000000, "2023-11-14 22:13:20"},
                                               {31622400, "1971-01-02 00:00:00"}};
/// Sizes in the same way.
const std::pair<std::size_t, const char*> sizes[] = {{0, "0 B"},       {999, "999 B"},
                                                     {1000, "1.0 kB"}, {1049, "1.0 kB"},
                                                     {1050, "1.1 kB"}, {54321, "54.3 kB"}};

class RandomProject {
public:
    RandomProject(const moxkit::TempTree& tree, moxkit::Random& rng) : tree_(tree), rng_(rng) {
        for (const std::string name : {"Gamma", "alpha", "beta (co)"}) {
            tree.mkdir("plant/" + name);
            texts.push_back("System " + name);
            fill(name);
        }
        tree.write("plant/.hidden/no system", "");
    }

    std::vector<std::string> texts;
    std::size_t files = 0;
    std::size_t rows = 5; ///< of the overview, with its head

private:
    void fill(const std::string& system) {
        std::map<std::string, std::map<std::string, std::string>> folders;
        std::map<std::string, std::set<int>> diagrams;
        for (int i = rng_.between(0, 20); i > 0; --i) {
            const std::string folder = pick({"", "filestore", "drawings", "drawings/a#b"});
            std::string name = pick({"one", "two.x", "three + 4"});
            const int revision = rng_.between(1, 12);
            const bool isDiagram = folder.empty() || folder == "filestore";
            if (isDiagram)
                diagrams[name].insert(folder.empty() ? 0 : revision);
            name += folder.empty() ? ".dgm" : "." + std::to_string(revision);
            folders[folder][name] = write("plant/" + system + "/" + folder + "/" + name);
        }
        expect(diagrams);
        expect(folders);
    }

    std::string pick(const std::vector<std::string>& names) {
        return names[static_cast<std::size_t>(rng_.between(0, static_cast<int>(names.size()) - 1))];
    }

    /// What the row of the file shows behind its name.
    std::string write(const std::string& name) {
        const auto& [bytes, size] = sizes[rng_.between(0, std::size(sizes) - 1)];
        const auto& [seconds, moment] = moments[rng_.between(0, std::size(moments) - 1)];
        const std::string path = tree_.write(name, std::string(bytes, 'x'));
        const auto time = std::chrono::file_clock::from_sys(
            std::chrono::sys_seconds(std::chrono::seconds(seconds)));
        fs::last_write_time(path, time);
        return std::string(size) + "\n" + moment;
    }

    void expect(const std::map<std::string, std::set<int>>& diagrams) {
        for (const auto& [name, revisions] : diagrams) {
            const std::size_t count = revisions.size() - revisions.count(0);
            texts.push_back(name);
            texts.push_back(std::to_string(count));
            if (count > 0)
                texts.push_back(std::to_string(*revisions.rbegin()));
            texts.push_back(std::to_string(revisions.size()));
        }
        rows += diagrams.empty() ? 0 : diagrams.size() + 1;
    }

    void expect(const std::map<std::string, std::map<std::string, std::string>>& folders) {
        for (const auto& [folder, inside] : folders) {
            texts.push_back(folder);
            for (const auto& [name, shown] : inside) {
                texts.push_back(name);
                texts.push_back(shown.substr(0, shown.find('\n')));
                texts.push_back(shown.substr(shown.find('\n') + 1));
            }
            files += inside.size();
            rows += inside.size() + 1;
        }
    }

    const moxkit::TempTree& tree_;
    moxkit::Random& rng_;
};

TEST_F(MoxReport, RandomProjectsInEachFormat) {
    kit::Random rng;
    for (int round = 0; round < 10; ++round) {
        fs::remove_all(tree.path("plant"));
        RandomProject project(tree, rng);
        project.texts.insert(project.texts.begin(),
                             {"Project plant", "As of 2023-11-14 22:13:20: 3 systems with " +
                                                   std::to_string(project.files) + " file"});
        for (const std::string suffix : {"html", "rtf", "mif", "iaf"}) {
            SCOPED_TRACE(suffix);
            const moxkit::Result result =
                run({"-projdir", "plant", "-output", "report." + suffix, "-Quiet"});
            EXPECT_EQ(result.status, 0);
            EXPECT_EQ(result.out + result.err, "");
            const std::string report = tree.read("report." + suffix);
            expectInOrder(suffix == "html"  ? reference::HtmlReader().read(report)
                          : suffix == "rtf" ? reference::RtfReader().read(report)
                          : suffix == "mif" ? reference::MifReader().read(report)
                                            : reference::InterleafReader().read(report),
                          project.texts);
            EXPECT_TRUE(suffix != "html" || count(report, "<tr>") == project.rows) << report;
        }
    }
}

TEST_F(MoxReport, OptionsSayWhatIsReportedAndHow) {
    tree.write("plant/a/one.dgm", "1");
    tree.write("plant/a/filestore/one.9", "12");
    tree.write("plant/a/filestore/one.10", "123");
    tree.write("plant/b/note #1.txt", "12345");
    tree.write("plant/beside", "");
    const std::string whole = textOf();
    expectInOrder(whole, {"Contents", "Overview", "System a", "System b", "beside", "Overview",
                          "All", "11 B", "System a", "one", "2", "10", "3", "6 B", "System b",
                          "note #1.txt", "Files beside the systems", "beside"});
    EXPECT_EQ(whole.find(tree.path()), whole.npos);

    const std::string one = textOf({"-system", "b"});
    EXPECT_EQ(one.find("System a"), one.npos);
    EXPECT_EQ(one.find("beside"), one.npos);
    expectInOrder(one, {"1 system with 1 file, 5 B", "note #1.txt"});
    expectInOrder(textOf({"-filter", "*.txt"}),
                  {"match *.txt", "System a", "No file of it is listed"});

    const std::string linked = run({"-p", "plant", "-path"}).out;
    EXPECT_NE(linked.find("/plant/b/note%20%231.txt\">note #1.txt</a>"), linked.npos) << linked;
    EXPECT_NE(linked.find("<a href=\"file:///"), linked.npos);

    EXPECT_NE(run({"-p", "plant", "-pagew", "216", "-pageh", "279", "-orientation", "landscape"})
                  .out.find("size:279.0mm 216.0mm"),
              std::string::npos);
    EXPECT_TRUE(run({"-p", "plant", "-formats", "rtf"}).out.starts_with("{\\rtf1"));
    const moxkit::Result told = run({"-p", "plant", "-formats", "mif", "-o", "x.html", "-verbose"});
    EXPECT_TRUE(tree.read("x.html").starts_with("<MIFFile 8.00>"));
    expectInOrder(told.out, {"Reading plant", "\nSystem 'a': 1 diagrams, 3 files\n",
                             "'x.html' reports 4 files of 2 systems.\n"});

    // The site says how dates are written.
    tree.write("ToolInfo", "date_format=@long\ntime_format=%H.%M\ndate_language=de\n");
    expectInOrder(textOf(), {"As of 14. November 2023 22.13: 2 systems"});
    options.env["ToolInfo"] = moxkit::unset; // none at all
    fs::remove(tree.path("ToolInfo"));
    EXPECT_EQ(textOf(), whole);
}

TEST_F(MoxReport, TroubleIsToldAndLeavesTheOldReport) {
    tree.write("plant/a/file", "1");
    const std::pair<std::vector<std::string>, std::string> lines[] = {
        {{}, "moxreport: "},
        {{"-p", ""}, "moxreport: the project directory is empty\n"},
        {{"-p", "plant", "more"}, "moxreport: "},
        {{"-p", "plant", "-formats", "pdf"}, "moxreport: option -formats: pdf is none of"},
        {{"-p", "plant", "-pagewidth", "59"},
         "moxreport: a page has 60 to 2000 millimetres, not 59\n"},
        {{"-p", "plant", "-pageheight", "99999999999"}, "moxreport: a page has 60 to"}};
    for (const auto& [arguments, problem] : lines) {
        const moxkit::Result result = run(arguments);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.err.find(problem), 0U) << result.err;
    }
    EXPECT_EQ(run({"-p", "none"}).status, 1);
    EXPECT_EQ(run({"-p", "plant", "-s", "none"}).err, "There is no system 'none'\n");
    EXPECT_EQ(run({"-p", "plant", "-s", ".."}).status, 1);
    const moxkit::Result result = run({"-p", "plant", "-o", "none/report.html"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "none/report.html: cannot be written: No such file or directory\n");
    if (options.stdoutFile = kit::fullDevice(); !options.stdoutFile.empty()) {
        EXPECT_EQ(run({"-p", "plant", "-o", "report.html"}).status, 0);
        EXPECT_NE(tree.read("report.html"), "");
    }
}

} // namespace
