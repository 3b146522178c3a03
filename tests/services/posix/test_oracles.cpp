// SPDX-License-Identifier: Apache-2.0
// Identifiers and checksums beside Python's, and in a process that forked.
#include "tools/services/KazGuid.h"
#include "tools/services/crc32.h"

#include "kit/random.h"
#include "testkit/process.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <set>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// What a Python program prints that reads @p input.
std::string python(const char* program, const std::string& input) {
    moxkit::RunOptions options;
    options.input = input;
    const moxkit::Result result = moxkit::run({"/usr/bin/env", "python3", "-c", program}, options);
    EXPECT_EQ(result.status, 0) << result.err;
    return result.out;
}

TEST(Oracle, NamesAndChecksums) {
    kit::Random random;
    std::string lines;
    std::string expected;
    for (int i = 0; i < 300; ++i) {
        const KazGuid space = KazGuid::create();
        const std::string name = random.text(90, "abc/:. -\xc3\xa9");
        std::string hex;
        for (const char c : name) {
            char text[3];
            std::snprintf(text, sizeof text, "%02x", static_cast<unsigned char>(c));
            hex += text;
        }
        lines += std::string(space.getText().getValue()) + " x" + hex + "\n";
        expected += std::string(KazGuid::fromName(space, name.c_str()).getText().getValue()) + " " +
                    std::to_string(kaz_crc32(0, name.data(), name.size())) + " " +
                    space.getText().getValue() + " 4\n";
    }
    const char* program = "import sys, uuid, zlib, hashlib\n"
                          "for line in sys.stdin:\n"
                          "    space, name = line.split()\n"
                          "    space = uuid.UUID(space); name = bytes.fromhex(name[1:])\n"
                          "    digest = hashlib.sha1(space.bytes + name).digest()[:16]\n"
                          "    print(uuid.UUID(bytes=digest, version=5), zlib.crc32(name), space,\n"
                          "          space.version)\n";
    EXPECT_EQ(python(program, lines), expected);
}

TEST(Oracle, PythonReadsOrderedOnesAndTheirVariant) {
    std::string lines;
    for (int i = 0; i < 100; ++i)
        lines +=
            (KazGuid::createOrdered().getText(i % 2 == 0 ? KazGuid::Braced : KazGuid::Compact) +
             "\n")
                .getValue();
    const char* program =
        "import sys, time, uuid\n"
        "read = [uuid.UUID(line.strip()) for line in sys.stdin]\n"
        "assert read == sorted(read)\n"
        "assert all(u.variant == uuid.RFC_4122 and u.version == 7 for u in read)\n"
        "assert all(abs((u.int >> 80) / 1000 - time.time()) < 60 for u in read)\n"
        "print('good')\n";
    EXPECT_EQ(python(program, lines), "good\n");
}

TEST(Guid, AChildDoesNotRepeatItsParent) {
    KazGuid::create();
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        for (int i = 0; i < 20; ++i) {
            const KazGuid guid = KazGuid::create();
            if (::write(ends[1], guid.getBytes(), 16) != 16)
                ::_exit(1);
        }
        ::_exit(0);
    }
    std::set<std::string> seen;
    for (int i = 0; i < 20; ++i)
        seen.insert(KazGuid::create().getText().getValue());
    for (int i = 0; i < 20; ++i) {
        unsigned char bytes[16];
        ASSERT_EQ(::read(ends[0], bytes, sizeof bytes), 16);
        seen.insert(KazGuid::fromBytes(bytes).getText().getValue());
    }
    EXPECT_EQ(seen.size(), 40u);
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    ::close(ends[0]);
    ::close(ends[1]);
}

} // namespace
