// SPDX-License-Identifier: Apache-2.0
#include "kit/sweep.h"

#include <gtest/gtest.h>

void kit::sweepQuestion(const std::string& name, const std::function<std::string()>& ask,
                        const std::vector<moxkit::FailAllocation::Mode>& modes) {
    SCOPED_TRACE(name);
    const std::string expected = ask();
    for (const auto mode : modes) {
        std::string answer;
        bool answered = false;
        const long failures = sweepAllocations(
            [&] {
                answer.clear();
                answered = false;
                answer = ask();
                answered = true;
            },
            [&] {
                EXPECT_EQ(answer, answered ? expected : "");
                EXPECT_EQ(ask(), expected);
            },
            mode);
        EXPECT_GT(failures, 0);
        EXPECT_EQ(answer, expected);
    }
}
