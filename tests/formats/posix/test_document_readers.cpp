// SPDX-License-Identifier: Apache-2.0
// Random reports before the programs that people open them with. Each may be missing: its
// test is then skipped.
#include "fuzz/writer_calls.h"
#include "testkit/process.h"
#include "testkit/random.h"
#include "testkit/temp_tree.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace {

/// The place of a program; "" when it is not installed.
std::string placeOf(const std::string& program) {
    const char* path = std::getenv("PATH");
    std::string rest = std::string(path != nullptr ? path : "/usr/bin") + ":";
    for (std::size_t end; (end = rest.find(':')) != std::string::npos; rest.erase(0, end + 1)) {
        const std::string candidate = rest.substr(0, end) + "/" + program;
        if (std::filesystem::exists(candidate))
            return candidate;
    }
    return "";
}

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

class Readers : public testing::TestWithParam<int> {
protected:
    Report write(doc_format_enum format, bool breaks = true) {
        return Report(format, GetParam(), tree.native("report"), breaks);
    }

    /// Is it not installed? With MOX_ALL_READERS=1 in the environment that is a failure.
    static bool isMissing(const std::string& program) {
        const char* const all = std::getenv("MOX_ALL_READERS");
        const bool result = placeOf(program).empty();
        EXPECT_FALSE(result && all != nullptr && *all == '1') << program << " is not installed";
        return result;
    }

    moxkit::Result run(std::vector<std::string> command, const Words& files = {"report"}) {
        command[0] = placeOf(command[0]);
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

TEST_P(Readers, Tidy) {
    if (isMissing("tidy"))
        GTEST_SKIP() << "tidy is not installed";
    write(doc_html);
    const moxkit::Result result =
        run({"tidy", "-e", "-q", "--drop-empty-elements", "no", "--show-info", "no"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "");
}

TEST_P(Readers, Xmllint) {
    if (isMissing("xmllint"))
        GTEST_SKIP() << "xmllint is not installed";
    write(doc_html);
    const moxkit::Result result = run({"xmllint", "--html", "--noout"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err.find("error"), std::string::npos) << result.err;
}

TEST_P(Readers, W3m) {
    if (isMissing("w3m"))
        GTEST_SKIP() << "w3m is not installed";
    // Cells stand beside one another; columns wide enough keep their texts in one line.
    const Report report = write(doc_html, false);
    const moxkit::Result result = run({"w3m", "-dump", "-cols", "20000", "-T", "text/html"});
    EXPECT_EQ(result.status, 0) << result.err;
    expectInOrder(result.out, report.words);
}

TEST_P(Readers, Unrtf) {
    if (isMissing("unrtf"))
        GTEST_SKIP() << "unrtf is not installed";
    Report report = write(doc_rtf);
    const moxkit::Result result = run({"unrtf", "--text", "--nopict"});
    EXPECT_EQ(result.status, 0) << result.err;
    // It shows where a link leads instead of its text.
    std::erase_if(report.words, [&report](const std::string& word) {
        return std::find(report.linked.begin(), report.linked.end(), word) != report.linked.end();
    });
    expectInOrder(result.out, report.words);
}

TEST_P(Readers, PandocReadsRtf) {
    if (isMissing("pandoc"))
        GTEST_SKIP() << "pandoc is not installed";
    const Report report = write(doc_rtf);
    const moxkit::Result result = run({"pandoc", "-f", "rtf", "-t", "json"});
    EXPECT_EQ(result.status, 0) << result.err;
    // It takes the letter behind a replacement character for a part of that.
    expectInOrder(result.out, report.words, {"w", "\"", "\xEF\xBF\xBD"});
}

TEST_P(Readers, PandocReadsHtml) {
    if (isMissing("pandoc"))
        GTEST_SKIP() << "pandoc is not installed";
    const Report report = write(doc_html);
    const moxkit::Result result = run({"pandoc", "-f", "html", "-t", "native"});
    EXPECT_EQ(result.status, 0) << result.err;
    expectInOrder(result.out, report.words);
}

INSTANTIATE_TEST_SUITE_P(Reports, Readers, testing::Range(0, 4));

/// Its start is what takes time: one for all reports of a format, and only where all readers
/// are asked for.
class OfficeReaders : public Readers {
protected:
    static bool isLeftOut() { return std::getenv("MOX_ALL_READERS") == nullptr; }

    void readAll(doc_format_enum format, const std::string& suffix,
                 const std::vector<std::string>& options) {
        std::vector<Report> reports;
        Words files;
        for (int number = 0; number < GetParam(); ++number) {
            files.push_back("report" + std::to_string(number) + suffix);
            reports.emplace_back(format, number, tree.native(files.back()));
        }
        std::vector<std::string> command = {"soffice", "--headless",
                                            "-env:UserInstallation=file://" + tree.path("profile"),
                                            "--convert-to", "txt:Text"};
        command.insert(command.end(), options.begin(), options.end());
        const moxkit::Result result = run(command, files);
        EXPECT_EQ(result.status, 0) << result.err;
        for (std::size_t i = 0; i < reports.size(); ++i) {
            SCOPED_TRACE(files[i]);
            expectInOrder(tree.read("report" + std::to_string(i) + ".txt"), reports[i].words);
        }
    }
};

TEST_P(OfficeReaders, Rtf) {
    if (isLeftOut() || isMissing("soffice"))
        GTEST_SKIP() << "LibreOffice is started by ./dev readers";
    readAll(doc_rtf, ".rtf", {});
}

TEST_P(OfficeReaders, Html) {
    if (isLeftOut() || isMissing("soffice"))
        GTEST_SKIP() << "LibreOffice is started by ./dev readers";
    readAll(doc_html, ".html", {"--infilter=HTML (StarWriter)"});
}

INSTANTIATE_TEST_SUITE_P(Reports, OfficeReaders, testing::Values(20));

} // namespace
