// SPDX-License-Identifier: Apache-2.0
// Identifiers and checksums: known values, laws and round trips.
#include "tools/services/KazGuid.h"
#include "tools/services/crc32.h"

#include "kit/random.h"
#include "testkit/temp_tree.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <gtest/gtest.h>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

KazGuid guidOf(const char* text) {
    KazGuid guid;
    EXPECT_TRUE(KazGuid::parse(text, guid)) << text;
    return guid;
}

TEST(Guid, VersionsAreMarked) {
    EXPECT_EQ(KazGuid::create().getVersion(), 4);
    EXPECT_EQ(KazGuid::createOrdered().getVersion(), 7);
    // Each bit that may vary does, on the average half of the time.
    int ones[128] = {};
    for (int i = 0; i < 2000; ++i) {
        const KazGuid guid = KazGuid::create();
        for (int bit = 0; bit < 128; ++bit)
            ones[bit] += guid.getBytes()[bit / 8] >> (bit % 8) & 1;
    }
    const auto varies = [](int count) { return count > 800 && count < 1200; };
    EXPECT_EQ(std::count_if(ones, ones + 128, varies), 122);
    EXPECT_TRUE(KazGuid().isNil());
    EXPECT_FALSE(KazGuid::create().isNil());
    EXPECT_EQ(KazGuid().getVersion(), 0);
    EXPECT_EQ(guidOf("00000000-0000-9000-8000-000000000000").getVersion(), 0);
    EXPECT_EQ(guidOf("00000000-0000-4000-4000-000000000000").getVersion(), 0);
    EXPECT_EQ(guidOf("00000000-0000-8000-bfff-000000000000").getVersion(), 8);
}

TEST(Guid, NothingRepeatsOnAnyThread) {
    std::set<KazGuid> seen;
    std::mutex mutex;
    const auto make = [&] {
        std::set<KazGuid> made;
        for (int i = 0; i < 3000; ++i)
            made.insert({KazGuid::create(), KazGuid::createOrdered()});
        const std::lock_guard<std::mutex> lock(mutex);
        seen.insert(made.begin(), made.end());
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 20; ++i)
        threads.emplace_back(make);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(seen.size(), 120000u);
}

TEST(Guid, OrderedOnesRiseAndTellTheTime) {
    using namespace std::chrono;
    const auto now = [] {
        return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
    };
    const long long before = now();
    KazGuid last = KazGuid::createOrdered();
    for (int i = 0; i < 50000; ++i) { // more than one millisecond can count
        const KazGuid next = KazGuid::createOrdered();
        ASSERT_LT(last, next);
        ASSERT_LT(std::strcmp(last.getText().getValue(), next.getText().getValue()), 0);
        last = next;
    }
    long long moment = 0;
    for (int i = 0; i < 6; ++i)
        moment = moment << 8 | last.getBytes()[i];
    EXPECT_GE(moment, before);
    EXPECT_LE(moment, now() + 50000 / 4096 + 1);
}

TEST(Guid, EachStyleIsReadBackAndNothingElse) {
    kit::Random random;
    for (int i = 0; i < 200; ++i) {
        const KazGuid guid = KazGuid::create();
        const std::string plain = guid.getText().getValue();
        for (const KazGuid::Style style : {KazGuid::Plain, KazGuid::Braced, KazGuid::Compact}) {
            std::string text = guid.getText(style).getValue();
            ASSERT_EQ(guidOf(text.c_str()), guid);
            ASSERT_EQ(guidOf(text.c_str()).hash(), guid.hash());
            // One character that does not belong there.
            const KazGuid before = KazGuid::create();
            KazGuid unchanged = before;
            std::string wrong = text;
            wrong[static_cast<std::size_t>(random.below(static_cast<int>(text.size())))] = 'g';
            ASSERT_FALSE(KazGuid::parse(wrong.c_str(), unchanged)) << wrong;
            ASSERT_FALSE(KazGuid::parse((text + " ").c_str(), unchanged));
            ASSERT_FALSE(KazGuid::parse((" " + text).c_str(), unchanged));
            text.pop_back();
            ASSERT_FALSE(KazGuid::parse(text.c_str(), unchanged)) << text;
            ASSERT_EQ(unchanged, before);
        }
        ASSERT_EQ(guidOf(("urn:uuid:" + plain).c_str()), guid);
        ASSERT_EQ(guidOf(("URN:UUID:" + plain).c_str()), guid);
        ASSERT_EQ(KazGuid::fromBytes(guid.getBytes()), guid);
    }
    KazGuid guid;
    for (const char* wrong :
         {static_cast<const char*>(nullptr), "", "{}", "urn:uuid:",
          "urn:uuid:0123456789abcdef0123456789abcdef", "{0123456789abcdef0123456789abcdef0000}",
          "0123456789-abcdef-0123-4567-89abcdef", "{01234567-89ab-cdef-0123-456789abcdef)"})
        EXPECT_FALSE(KazGuid::parse(wrong, guid));
    EXPECT_STREQ(guidOf("01234567-89AB-cdef-0123-456789abcdef").getText(KazGuid::Braced).getValue(),
                 "{01234567-89AB-CDEF-0123-456789ABCDEF}");
}

/// The examples of RFC 9562, and of Python's documentation of its module uuid.
TEST(Guid, NamesGiveTheSameEverywhere) {
    EXPECT_EQ(KazGuid::fromName(KazGuid::dnsSpace, "www.example.com"),
              guidOf("2ed6657d-e927-568b-95e1-2665a8aea6a2"));
    EXPECT_EQ(KazGuid::fromName(KazGuid::dnsSpace, "python.org"),
              guidOf("886313e1-3b8a-5372-9b90-0c9aee199e5d"));
    EXPECT_EQ(KazGuid::fromName(KazGuid(), nullptr), KazGuid::fromName(KazGuid(), ""));
    EXPECT_EQ(KazGuid::fromName(KazGuid::urlSpace, "x").getVersion(), 5);
    EXPECT_LT(KazGuid::dnsSpace, KazGuid::urlSpace);
}

std::uint32_t sumOf(const std::string& text) {
    return kaz_crc32(0, text.data(), text.size());
}

TEST(Checksum, PartsAndTheWholeAgree) {
    EXPECT_EQ(sumOf("123456789"), 0xCBF43926u);
    EXPECT_EQ(kaz_crc32(0xCBF43926u, nullptr, 7), 0xCBF43926u);
    kit::Random random;
    for (int i = 0; i < 200; ++i) {
        const std::string first = random.text(3000, std::string("ab\0\xff", 4));
        const std::string second = random.text(3000, std::string("ab\0\xff", 4));
        const std::uint32_t whole = sumOf(first + second);
        ASSERT_EQ(kaz_crc32(sumOf(first), second.data(), second.size()), whole);
        ASSERT_EQ(kaz_crc32_combine(sumOf(first), sumOf(second), second.size()), whole);
        // Sizes that no text has: putting three in a row in either order.
        const std::uint64_t sizes[] = {random.bits(), random.bits() >> 20};
        const auto a = static_cast<std::uint32_t>(random.bits());
        const auto b = static_cast<std::uint32_t>(random.bits());
        const auto c = static_cast<std::uint32_t>(random.bits());
        if (sizes[0] + sizes[1] >= sizes[0]) {
            ASSERT_EQ(kaz_crc32_combine(kaz_crc32_combine(a, b, sizes[0]), c, sizes[1]),
                      kaz_crc32_combine(a, kaz_crc32_combine(b, c, sizes[1]), sizes[0] + sizes[1]));
        }
    }
}

TEST(Checksum, OfFiles) {
    const moxkit::TempTree tree;
    std::uint32_t crc = 1;
    std::uint64_t size = 1;
    for (const std::size_t length : {0u, 1u, 65536u, 65537u, 300000u}) {
        const std::string text(length, 'x');
        tree.write("f", text);
        ASSERT_EQ(kaz_crc32_file(tree.native("f").c_str(), &crc, &size), 0);
        EXPECT_EQ(crc, sumOf(text));
        EXPECT_EQ(size, length);
    }
    EXPECT_EQ(kaz_crc32_file(tree.path("f").c_str(), nullptr, nullptr), 0);
    crc = 1;
    size = 2;
    errno = 0;
    EXPECT_EQ(kaz_crc32_file(tree.native("none").c_str(), &crc, &size), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(kaz_crc32_file(tree.native().c_str(), &crc, &size), -1);
    EXPECT_EQ(errno, EISDIR);
    EXPECT_EQ(kaz_crc32_file(nullptr, &crc, &size), -1);
    EXPECT_EQ(crc, 1u);
    EXPECT_EQ(size, 2u);
}

} // namespace
