// SPDX-License-Identifier: Apache-2.0
// Identifiers and checksums beside Python's, and in a process that forked.
#include "tools/services/KazGuid.h"
#include "tools/services/crc32.h"

#include "kit/random.h"
#include "testkit/process.h"

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
        lines += space.getText().getValue() + ("\t" + name) + "\n";
        expected += std::string(KazGuid::fromName(space, name.c_str()).getText().getValue()) + " " +
                    std::to_string(kaz_crc32(0, name.data(), name.size())) + " " +
                    space.getText().getValue() + " 4\n";
    }
    const char* program = "import sys, uuid, zlib, hashlib\n"
                          "for line in sys.stdin.buffer:\n"
                          "    space, name = line.rstrip(b'\\n').split(b'\\t')\n"
                          "    space = uuid.UUID(space.decode())\n"
                          "    digest = hashlib.sha1(space.bytes + name).digest()[:16]\n"
                          "    print(uuid.UUID(bytes=digest, version=5), zlib.crc32(name), space,\n"
                          "          space.version)\n";
    EXPECT_EQ(python(program, lines), expected);
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
