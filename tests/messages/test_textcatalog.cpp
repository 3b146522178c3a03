// SPDX-License-Identifier: Apache-2.0
// The catalog keeps its state for the life of the process, so what its functions do
// is tried in processes of their own (config_probe). Which text a lookup finds is
// the fuzz harness's to test.

#include "programs/moxmsg/message_file.h"
#include "testkit/alloc_failure.h"
#include "testkit/director.h"
#include "testkit/process.h"
#include "testkit/temp_tree.h"
#include "tools/messages/catalog/detail/MessageCatalog.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <optional>
#include <string_view>
#include <utility>

namespace {

using kaz::detail::MessageCatalog;

/// What the probe has as the reason when it asks for one.
const std::string reason = std::string(std::strerror(EDOM)) + "\n";

/// Runs the probe with @p toolInfo as configuration and @p script as commands.
moxkit::Result probe(const std::string& toolInfo, const std::string& script,
                     const std::string& directory = {}) {
    static const moxkit::TempTree tree;
    moxkit::RunOptions options;
    options.env["ToolInfo"] = tree.write("ToolInfo", toolInfo);
    options.input = script;
    options.cwd = directory;
    const moxkit::Result result = moxkit::run({"config_probe"}, options);
    EXPECT_EQ(result.status, 0) << result.err;
    return result;
}

std::string messageFile(std::map<int, Message> texts) {
    Messages messages{"", std::move(texts), {}};
    return encodeMessageFile(messages);
}

TEST(TextCatalog, WithoutAFile) {
    const std::string complaint = "Could not initialize text from file\n";
    const std::string script = "stats\nlook\t1\nperror\t0\n";
    for (const char* file : {"/no/such/file", "/", "/dev/null"}) {
        const moxkit::Result shown =
            probe("msg_file=" + std::string(file) + "\nTextStats=ye\n", script);
        EXPECT_EQ(shown.out, "\n\n\n");
        EXPECT_EQ(shown.err, "Text tables not initialized\n" + complaint + complaint + reason)
            << file;
    }
    for (const char* silent :
         {"TextStats=n\n", "TextStats=\n", "TextStats=/no/such/directory/file\n", ""})
        EXPECT_EQ(probe(silent, script).err, complaint + complaint + reason);
}

TEST(TextCatalog, RegisteredTexts) {
    const moxkit::TempTree tree;
    tree.write("file", messageFile({{300, {"from\tthe file"}}, {2, {"No"}}}));
    const std::string script =
        "putno\t300\ty\nlook\t300\nput\tx\nput\nlook\t15873\nlook\t15874\ncopy\t2\n"
        "perror\t2\nstats\nstats\n";
    const moxkit::Result result =
        probe("msg_file=" + tree.native("file") + "\nTextStats=no\n", script, tree.path());
    EXPECT_EQ(result.out, "300\nfrom\tthe file\n15873\n15874\nx\n\nNo\n\n\n\n");
    EXPECT_EQ(result.err, "No: " + reason);
    const std::string statistics = tree.readText("no"); // two equal ones
    EXPECT_EQ(statistics.substr(0, 49), "\nBucket tables 2 entries used\n 0  1 \n\nCurrent LRU");
    EXPECT_EQ(statistics.substr(0, statistics.size() / 2),
              statistics.substr(statistics.size() / 2));
    EXPECT_NE(statistics.find("Text from^Ithe file\n"), statistics.npos) << "in any locale";
}

TEST(TextCatalog, ATextOfOnesOwnIsReplacedByOneWithTheSameArguments) {
    const moxkit::TempTree tree;
    tree.write("file", messageFile({{1, {"%2$d von %1$-9s"}}, {2, {"%d"}}, {3, {"100%"}}}));
    const std::string script = "text\t1\t%s: %i\ntext\t1\t%s\ntext\t2\t%s\ntext\t3\tall\n"
                               "text\t4\tnone\ntext\t1\t%s: %i\n";
    const std::string english = "%s: %i\n%s\n%s\nall\nnone\n%s: %i\n";
    const moxkit::Result found = probe("msg_file=" + tree.native("file") + "\n", script);
    EXPECT_EQ(found.out, "%2$d von %1$-9s\n%s\n%s\nall\nnone\n%2$d von %1$-9s\n");
    EXPECT_EQ(found.err, "");
    const moxkit::Result silent = probe("", script);
    EXPECT_EQ(silent.out + silent.err, english);
    const moxkit::Result told = probe("msg_file=" + tree.native("none") + "\n", script);
    EXPECT_EQ(told.out, english);
    EXPECT_EQ(told.err, "Cannot read the message file '" + tree.native("none") + "'\n");
    // Looking for a variable would be a fatal error.
    moxkit::RunOptions options;
    options.env["ToolInfo"] = tree.path("none");
    options.input = script;
    const moxkit::Result alone = moxkit::run({"config_probe"}, options);
    EXPECT_EQ(alone.out + alone.err, english);
}

kaz::host::ReadableFile openFile(KazString& name) {
    static const moxkit::TempTree tree;
    static const std::string file = tree.write("file", messageFile({{1, {"one"}}, {300, {"two"}}}));
    name = file.c_str();
    return kaz::host::ReadableFile(file.c_str());
}

/// Three lookups, one of them of a registered text. None may give a wrong text.
int countFound(MessageCatalog& catalog) {
    catalog.put("three", -7);
    int found = 0;
    for (const auto& [number, text] : {std::pair{1, "one"}, {300, "two"}, {-7, "three"}}) {
        const std::string_view shown = catalog.look(number);
        EXPECT_TRUE(shown == text || shown.empty()) << number << ": " << shown;
        found += shown == text;
    }
    return found;
}

TEST(TextCatalog, WithoutMemoryTheNextLookupTriesAgain) {
    const moxkit::RecordingDirector director;
    MessageCatalog(openFile).look(1); // makes the file
    for (const auto mode : {moxkit::FailAllocation::once, moxkit::FailAllocation::onward}) {
        std::optional<MessageCatalog> catalog;
        int found = 0, unread = 0;
        const long failed = moxkit::sweepAllocations(
            [&] {
                found = 0;
                catalog.emplace(openFile);
                found = countFound(*catalog);
            },
            [&] {
                unread += found < 3;
                EXPECT_EQ(countFound(*catalog), 3);
            },
            mode);
        EXPECT_EQ(found, 3);
        EXPECT_GT(failed, 3) << "the file, the cache and the tables";
        EXPECT_EQ(unread, failed);
    }
    for (const std::string& error : director.errors)
        EXPECT_TRUE(error.empty() || // no memory to note it
                    error.starts_with("Memory allocation for message") ||
                    error.starts_with("Could not initialize text"))
            << error;
}

TEST(TextCatalog, AMissReadsWhatTheFileHoldsThen) {
    static const moxkit::TempTree tree;
    const auto open = [](KazString&) { return kaz::host::ReadableFile(tree.path("f").c_str()); };
    std::string bytes = messageFile({{1, {"one"}}, {2, {"two"}}, {3, {"three"}}});
    tree.write("f", bytes);
    MessageCatalog catalog(open);
    EXPECT_STREQ(catalog.look(1), "one");
    bytes.replace(bytes.find("two"), 3, "TWO");
    tree.write("f", bytes);
    EXPECT_STREQ(catalog.look(2), "TWO");
    tree.write("f", bytes.substr(0, bytes.find("three")));
    EXPECT_STREQ(catalog.look(3), "");
    EXPECT_STREQ(catalog.look(2), "TWO");
    tree.write("f", bytes);
    EXPECT_STREQ(catalog.look(3), "three");
}

TEST(TextCatalog, WithoutMemoryForItsEntryATextIsNotRegistered) {
    MessageCatalog catalog(openFile);
    const moxkit::FailAllocation failure(1, moxkit::FailAllocation::onward);
    EXPECT_EQ(catalog.put("text", 5), 0);
}

} // namespace
