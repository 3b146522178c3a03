// SPDX-License-Identifier: Apache-2.0
// Random reports before the programs that people open them with. Each may be missing: its
// test is then skipped.
#include "fuzz/writer_calls.h"
#include "kit/process.h"
#include "kit/random.h"
#include "kit/temp_tree.h"

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

class Readers : public testing::TestWithParam<int> {
protected:
    /// Writes a random report, the same one for each parameter.
    void write(doc_format_enum format) {
        kit::Random rng(kit::seed() + static_cast<std::uint64_t>(GetParam()));
        std::vector<std::uint8_t> bytes(static_cast<std::size_t>(rng.between(50, 2500)));
        std::generate(bytes.begin(), bytes.end(),
                      [&rng] { return static_cast<std::uint8_t>(rng.bits()); });
        std::unique_ptr<KazDocWriter> doc(KazDocWriter::create(format));
        fuzz::WriterCalls calls(*doc, "");
        calls.make(fuzz::Input(bytes.data(), bytes.size()));
        doc->write(tree.native("report").c_str());
        words = calls.words;
        linked = calls.linked;
    }

    kit::Result run(std::vector<std::string> command) {
        command[0] = placeOf(command[0]);
        if (command[0].empty())
            return {};
        isThere = true;
        command.push_back(tree.path("report"));
        kit::RunOptions options;
        options.env = {{"LC_ALL", "C.UTF-8"}, {"HOME", tree.path()}};
        options.cwd = tree.path();
        return kit::run(command, options);
    }

    void expectWords(const std::string& text) const {
        std::size_t at = 0;
        for (const std::string& word : words) {
            const std::size_t found = text.find(word, at);
            ASSERT_NE(found, std::string::npos) << word << " is not behind\n" << text.substr(0, at);
            at = found + word.size();
        }
    }

    kit::TempTree tree;
    std::vector<std::string> words, linked;
    bool isThere = false;
};

TEST_P(Readers, Tidy) {
    SCOPED_TRACE(kit::seedText());
    write(doc_html);
    const kit::Result result =
        run({"tidy", "-e", "-q", "--drop-empty-elements", "no", "--show-info", "no"});
    if (!isThere)
        GTEST_SKIP() << "tidy is not installed";
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.err, "");
}

TEST_P(Readers, Xmllint) {
    SCOPED_TRACE(kit::seedText());
    write(doc_html);
    const kit::Result result = run({"xmllint", "--html", "--noout"});
    if (!isThere)
        GTEST_SKIP() << "xmllint is not installed";
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err.find("error"), std::string::npos) << result.err;
}

TEST_P(Readers, W3m) {
    SCOPED_TRACE(kit::seedText());
    write(doc_html);
    // Cells stand beside one another; columns wide enough keep their texts in one line.
    const kit::Result result = run({"w3m", "-dump", "-cols", "2000", "-T", "text/html"});
    if (!isThere)
        GTEST_SKIP() << "w3m is not installed";
    EXPECT_EQ(result.status, 0) << result.err;
    for (const std::string& word : words)
        EXPECT_NE(result.out.find(word), std::string::npos) << word << "\n" << result.out;
}

TEST_P(Readers, Unrtf) {
    SCOPED_TRACE(kit::seedText());
    write(doc_rtf);
    const kit::Result result = run({"unrtf", "--text", "--nopict"});
    if (!isThere)
        GTEST_SKIP() << "unrtf is not installed";
    EXPECT_EQ(result.status, 0) << result.err;
    // It shows where a link leads instead of its text.
    std::erase_if(words, [this](const std::string& word) {
        return std::find(linked.begin(), linked.end(), word) != linked.end();
    });
    expectWords(result.out);
}

TEST_P(Readers, Pandoc) {
    SCOPED_TRACE(kit::seedText());
    write(doc_rtf);
    const kit::Result result = run({"pandoc", "-f", "rtf", "-t", "plain", "--wrap=none"});
    if (!isThere)
        GTEST_SKIP() << "pandoc is not installed";
    EXPECT_EQ(result.status, 0) << result.err;
    // It takes the letter behind a replacement character for a part of that.
    for (const std::string& word : words) {
        const bool isShown = result.out.find(word) != std::string::npos ||
                             result.out.find("\xEF\xBF\xBD" + word.substr(1)) != std::string::npos;
        EXPECT_TRUE(isShown) << word << "\n" << result.out;
    }
}

INSTANTIATE_TEST_SUITE_P(Reports, Readers, testing::Range(0, 4));

} // namespace
