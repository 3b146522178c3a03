// SPDX-License-Identifier: Apache-2.0
// Random reports before the programs that people open them with. Each may be missing: its
// test is then skipped.
#include "fuzz/writer_calls.h"
#include "testkit/process.h"
#include "testkit/random.h"
#include "testkit/temp_tree.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace {

using Words = std::vector<std::string>;

/// A random report, the same one for each number, and what it says.
struct Report {
    Report(doc_format_enum format, int number, const std::string& file, bool breaks = true) {
        moxkit::Random rng(moxkit::seed() + static_cast<std::uint64_t>(number));
        std::vector<std::uint8_t> bytes(static_cast<std::size_t>(rng.between(50, 2500)));
        std::generate(bytes.begin(), bytes.end(),
                      [&rng] { return static_cast<std::uint8_t>(rng.bits()); });
        const std::unique_ptr<KazDocWriter> doc(KazDocWriter::create(format));
        fuzz::WriterCalls calls(*doc, "", breaks);
        calls.make(fuzz::Input(bytes.data(), bytes.size()));
        doc->write(file.c_str());
        words = calls.words;
        linked = calls.linked;
    }

    Words words, linked;
};

/// Each word behind the one before it; its first letter may have become one of @p firsts.
void expectInOrder(const std::string& text, const Words& words, const Words& firsts = {"w"}) {
    std::size_t at = 0;
    for (const std::string& word : words) {
        std::size_t found = std::string::npos;
        for (const std::string& first : firsts)
            found = std::min(found, text.find(first + word.substr(1), at));
        ASSERT_NE(found, std::string::npos) << word << " is not behind\n" << text.substr(0, at);
        at = found + word.size() - 1;
    }
}

class ReaderTest : public testing::Test {
protected:
    /// Is it not installed? With MOX_ALL_READERS=1 in the environment that is a failure.
    static bool isMissing(const std::string& program) {
        const char* const all = std::getenv("MOX_ALL_READERS");
        const bool result = std::system(("command -v " + program + " >/dev/null").c_str()) != 0;
        EXPECT_FALSE(result && all != nullptr && *all == '1') << program << " is not installed";
        return result;
    }

    moxkit::Result run(Words command, const Words& files) {
        command.insert(command.begin(), "/usr/bin/env");
        for (const std::string& file : files)
            command.push_back(tree.path(file));
        moxkit::RunOptions options;
        options.env = {{"LC_ALL", "C.UTF-8"}, {"HOME", tree.path()}};
        options.cwd = tree.path();
        options.timeoutSeconds = 300;
        return moxkit::run(command, options);
    }

    moxkit::TempTree tree;

private:
    testing::ScopedTrace trace_{__FILE__, __LINE__, moxkit::seedText()};
};

struct Reader {
    enum Kind {
        Shows,
        ShowsCellsBesideOneAnother,
        ShowsWhereLinksLead, ///< instead of their texts
        Checks               ///< and shows nothing but what is wrong
    };
    const char* name;
    Kind kind;
    doc_format_enum format;
    Words command;
    Words firsts = {"w"};
};

std::ostream& operator<<(std::ostream& out, const Reader& reader) {
    return out << reader.name;
}

class Readers : public ReaderTest, public testing::WithParamInterface<Reader> {};

TEST_P(Readers, TakeRandomReports) {
    const Reader& reader = GetParam();
    if (isMissing(reader.command[0]))
        GTEST_SKIP() << reader.command[0] << " is not installed";
    for (int number = 0; number < 4; ++number) {
        SCOPED_TRACE(number);
        Report report(reader.format, number, tree.native("report"),
                      reader.kind != Reader::ShowsCellsBesideOneAnother);
        const moxkit::Result result = run(reader.command, {"report"});
        EXPECT_EQ(result.status, 0) << result.err;
        if (reader.kind == Reader::Checks) {
            EXPECT_EQ(result.err.find("error"), std::string::npos) << result.err;
            continue;
        }
        if (reader.kind == Reader::ShowsWhereLinksLead)
            for (const std::string& word : report.linked)
                std::erase(report.words, word);
        expectInOrder(result.out, report.words, reader.firsts);
    }
}

// Columns wide enough keep the texts of cells in one line. Pandoc takes the letter behind a
// replacement character of RTF for a part of that.
INSTANTIATE_TEST_SUITE_P(
    Reports, Readers,
    testing::Values(
        Reader{"Tidy",
               Reader::Checks,
               doc_html,
               {"tidy", "-e", "-q", "--drop-empty-elements", "no", "--show-info", "no"}},
        Reader{"Xmllint", Reader::Checks, doc_html, {"xmllint", "--html", "--noout"}},
        Reader{"W3m",
               Reader::ShowsCellsBesideOneAnother,
               doc_html,
               {"w3m", "-dump", "-cols", "20000", "-T", "text/html"}},
        Reader{"Unrtf", Reader::ShowsWhereLinksLead, doc_rtf, {"unrtf", "--text", "--nopict"}},
        Reader{"PandocRtf",
               Reader::Shows,
               doc_rtf,
               {"pandoc", "-f", "rtf", "-t", "json"},
               {"w", "\"", "\xEF\xBF\xBD"}},
        Reader{"PandocHtml", Reader::Shows, doc_html, {"pandoc", "-f", "html", "-t", "native"}}),
    [](const auto& info) { return info.param.name; });

/// Its start is what takes time: one for all reports of a format, and only where all readers
/// are asked for.
class OfficeReaders : public ReaderTest {};

TEST_F(OfficeReaders, TakeRandomReports) {
    if (std::getenv("MOX_ALL_READERS") == nullptr || isMissing("soffice"))
        GTEST_SKIP() << "LibreOffice is started by ./dev readers";
    for (const auto& [format, suffix] : {std::pair{doc_rtf, ".rtf"}, {doc_html, ".html"}}) {
        std::vector<Report> reports;
        Words files;
        for (int number = 0; number < 20; ++number) {
            files.push_back("report" + std::to_string(number) + suffix);
            reports.emplace_back(format, number, tree.native(files.back()));
        }
        Words command = {"soffice", "--headless",
                         "-env:UserInstallation=file://" + tree.path("profile"), "--convert-to",
                         "txt:Text"};
        if (format == doc_html)
            command.emplace_back("--infilter=HTML (StarWriter)");
        const moxkit::Result result = run(command, files);
        EXPECT_EQ(result.status, 0) << result.err;
        for (std::size_t i = 0; i < reports.size(); ++i) {
            SCOPED_TRACE(files[i]);
            expectInOrder(tree.read("report" + std::to_string(i) + ".txt"), reports[i].words);
        }
    }
}

} // namespace
