// SPDX-License-Identifier: Apache-2.0
#include "greeting.h"

#include <gtest/gtest.h>

TEST(Greeting, NamesWhoIsGreeted) {
    EXPECT_STREQ("Hello, brewery.", greeting("brewery").getValue());
    EXPECT_STREQ("Hello, 100%s.", greeting("100%s").getValue());
}
