// SPDX-License-Identifier: Apache-2.0
// Whole programs, each of their system calls failing once, or interrupted.
#include "kit/posix/traced.h"
#include "programs/posix/swept.h"

#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <set>

namespace {

using namespace swept_test;

class Programs : public Swept {
protected:
    Programs() {
        tree.write("texts source", "200 To copy: %s\n215 Where is '%s'? '%s' is not there\n");
        outputOf({"moxmsg", "-source", "texts source", "-output", "texts"});
        configure("msg_file=" + tree.path("texts") + "\n");
    }

    /// Fails each call once: each with another of the errors, or with every one
    /// when the environment variable KIT_SWEEP is set.
    void sweep(const Words& command, const std::function<void()>& prepare,
               const Check& check) override {
        if (!kit::canTrace())
            GTEST_SKIP() << "strace is missing, or may not trace here";
        static const std::vector<std::string> errors = {"ENOSPC", "EIO", "EACCES", "EINTR",
                                                        "EMFILE"};
        const bool all = std::getenv("KIT_SWEEP") != nullptr;
        prepare();
        const std::vector<kit::Call> calls = kit::callsOf(command, options);
        ASSERT_GT(calls.size(), 10u);
        std::size_t runs = 0;
        for (std::size_t i = 0; i < calls.size(); ++i)
            for (std::size_t e = 0; e < errors.size(); ++e) {
                if (!all && (i + e) % errors.size() != 0)
                    continue;
                SCOPED_TRACE(calls[i].text + " fails with " + errors[e]);
                prepare();
                const moxkit::Result result =
                    kit::runFailing(command, options, calls[i], errors[e]);
                ++runs;
                EXPECT_EQ(result.signal, 0);
                EXPECT_TRUE(result.status == 0 || result.status == 1) << result.status;
                EXPECT_TRUE(result.status == 0 || !result.err.empty()) << "no message";
                check(result);
            }
        RecordProperty("runs", std::to_string(runs));
    }

    bool mayLeave(const moxkit::Result& result) const override {
        return result.err.find("Cannot remove") != result.err.npos;
    }
};

TEST_F(Programs, ACopyOfASystemIsWholeOrAsItWas) {
    for (const bool exists : {false, true})
        sweepCopy({"moxcopy", "-p", "plant", "-s", "brewery", "-target", "copies", "-Force"},
                  exists);
}

/// In the middle of one large file, which has no holes: no further portion is begun.
TEST_F(Programs, AnInterruptIsHeardBetweenPortionsOfAFile) {
    if (!kit::canTrace())
        GTEST_SKIP() << "strace is missing, or may not trace here";
    tree.write("plant/brewery/large", std::string(std::size_t{200} << 20, 'x'));
    const Words command = {"moxcopy", "-p", "plant", "-s", "brewery", "-target", "copies"};
    for (const char* signal : {"INT", "TERM"}) {
        int made = 0;
        const moxkit::Result result =
            kit::runSignalled(command, options, "copy_file_range", 2, signal, made);
        EXPECT_EQ(made, 2);
        EXPECT_TRUE(result.status == 9 || result.signal == SIGTERM) << result.err;
        EXPECT_FALSE(tree.exists("copies"));
    }
}

TEST_F(Programs, AMessageFileIsWholeOrAsItWas) {
    sweepMessageFile();
}

TEST_F(Programs, AMessageFileIsPrivateUntilItIsWhole) {
    if (!kit::canTrace())
        GTEST_SKIP() << "strace is missing, or may not trace here";
    int created = 0;
    for (const kit::Call& call :
         kit::callsOf({"moxmsg", "-source", "source", "-output", "file"}, options)) {
        if (call.text.find("file.new") == call.text.npos ||
            call.text.find("O_CREAT") == call.text.npos)
            continue;
        ++created;
        EXPECT_NE(call.text.find(", 0600)"), call.text.npos) << call.text;
    }
    EXPECT_GT(created, 0);
}

TEST_F(Programs, AReportIsWholeOrAsItWas) {
    sweepReport({}, true);
}

TEST_F(Programs, AConfigurationIsShownOrTheReasonIsTold) {
    sweepOutput({"moxinfo", "name", "other"});
}

TEST_F(Programs, AnInterruptedTransferGoesOn) {
    if (!kit::canTrace())
        GTEST_SKIP() << "strace is missing, or may not trace here";
    const std::vector<Words> commands = {
        {"moxmsg", "-source", "source", "-output", "file"},
        {"moxmsg", "-file", "file"},
        {"moxcopy", "-p", "plant", "-s", "winery", "-target", "copies"}};
    for (const auto& command : commands) {
        const moxkit::Result expected = moxkit::run(command, options);
        const std::string file = tree.read("file");
        for (const kit::Call& call : kit::callsOf(command, options)) {
            static const std::set<std::string> transfers = {"openat", "read", "pread64", "write"};
            // A message on standard error is given up, being no result.
            if (transfers.count(call.name) == 0 || call.text.starts_with("write(2,"))
                continue;
            const moxkit::Result result = kit::runFailing(command, options, call, "EINTR");
            EXPECT_EQ(result.status, expected.status) << call.text;
            EXPECT_EQ(result.out + result.err, expected.out + expected.err) << call.text;
            EXPECT_EQ(tree.read("file"), file) << call.text;
        }
    }
}

} // namespace
