// Message files whose reads come in pieces, are interrupted, or fail.
#include "kit/director.h"
#include "programs/moxmsg/message_file.h"
#include "tools/messages/detail/MessageCatalog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace {

/// A stream over a text, one call of which fails.
struct Source {
    std::string bytes;
    std::size_t at = 0;
    std::size_t piece = 0; ///< the most that one read gives
    int calls = 0;
    int failing = 0; ///< 0 for none
    int error = 0;

    bool fails() {
        errno = error;
        return ++calls == failing;
    }
};
Source source;

ssize_t readSource(void*, char* to, std::size_t size) {
    if (source.fails())
        return -1;
    size = std::min({size, source.piece, source.bytes.size() - source.at});
    std::memcpy(to, source.bytes.data() + source.at, size);
    source.at += size;
    return static_cast<ssize_t>(size);
}

int seekSource(void*, off64_t* offset, int) {
    if (source.error != EINTR && source.fails()) // seeking is not interrupted
        return -1;
    source.at = std::min(static_cast<std::size_t>(*offset), source.bytes.size());
    return 0;
}

std::FILE* openSource(KazString&) {
    return fopencookie(nullptr, "rb", {readSource, nullptr, seekSource, nullptr});
}

struct Found {
    int texts = 0;
    int calls = 0;
};

Found lookUp(std::size_t piece, int failing, int error) {
    source.piece = piece;
    source.calls = 0;
    source.failing = failing;
    source.error = error;
    kaz::detail::MessageCatalog catalog(openSource);
    Found found;
    for (const auto& [number, text] : {std::pair{1, "one"}, {300, "two"}, {2, "last"}}) {
        const std::string_view shown = catalog.look(number);
        EXPECT_TRUE(shown == text || shown.empty()) << shown;
        found.texts += shown == text;
    }
    found.calls = source.calls;
    return found;
}

TEST(CatalogStreams, InterruptionsAndPiecesGoUnnoticedAndFailuresGiveNoWrongText) {
    Messages messages{"", {{1, {"one"}}, {300, {"two"}}, {2, {"last"}}}, {}};
    source.bytes = encodeMessageFile(messages);
    const kit::RecordingDirector director;
    for (const std::size_t piece : {1000000, 100}) {
        const Found all = lookUp(piece, 0, EIO);
        EXPECT_EQ(all.texts, 3);
        for (int n = 1; n <= all.calls; ++n)
            EXPECT_EQ(lookUp(piece, n, EINTR).texts, 3);
    }
    EXPECT_TRUE(director.errors.empty());
    const int calls = lookUp(1000000, 0, EIO).calls;
    int missed = 0;
    for (int n = 1; n <= calls; ++n)
        missed += lookUp(1000000, n, EIO).texts < 3;
    EXPECT_EQ(missed, calls);
}

TEST(CatalogStreams, AMissReadsWhatTheFileHoldsThen) {
    Messages messages{"", {{1, {"one"}}, {2, {"two"}}, {3, {"three"}}}, {}};
    source = {encodeMessageFile(messages)};
    source.piece = source.bytes.size();
    source.error = EIO;
    kaz::detail::MessageCatalog catalog(openSource);
    EXPECT_STREQ(catalog.look(1), "one");
    source.bytes.replace(source.bytes.find("two"), 3, "TWO");
    EXPECT_STREQ(catalog.look(2), "TWO");
    source.bytes.resize(source.bytes.find("three"));
    EXPECT_STREQ(catalog.look(3), "");
    EXPECT_STREQ(catalog.look(2), "TWO");
}

} // namespace
