// SPDX-License-Identifier: Apache-2.0
#include "tools/config/vstring.h"

#include "tools/app/exceptions/KazMemoryException.h"

#include "testkit/director.h"
#include "testkit/env.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace {

/// No ToolInfo file is there; the fatal error about it returns.
class VString : public testing::Test {
protected:
    void TearDown() override { vstring_clear_lookup_funcs(); }
    moxkit::ScopedEnv toolInfo{"ToolInfo", "/no/such/file"};
    moxkit::RecordingDirector director;
};

TEST_F(VString, NullIsAnEmptyTextAndNoFunction) {
    EXPECT_EQ(vstring_lookup_var(nullptr), nullptr);
    EXPECT_TRUE(vstring_push_lookup_func(nullptr));
    EXPECT_TRUE(vstring_push_lookup_func(nullptr, this));
    vstring_set_simple_var(nullptr, "unnamed");
    vstring_set_simple_var("empty", nullptr);
    EXPECT_EQ(vstring_sub("${}|${empty}|${none}"), "unnamed||");
    EXPECT_EQ(vstring_num_vars(nullptr), 0);
    EXPECT_FALSE(vstring_sub("text", nullptr));
    EXPECT_EQ(vstring_sub(nullptr), "");
    char* result = nullptr;
    EXPECT_TRUE(vstring_sub(nullptr, &result));
    EXPECT_STREQ(result, "");
    std::free(result);
}

TEST_F(VString, ResolversMayPushAndPop) {
    vstring_set_simple_var("a", "simple");
    for (int i = 0; i < 5; ++i)
        vstring_push_lookup_func([](const char*) { return "gone"; });
    vstring_push_lookup_func([](const char*) -> const char* {
        vstring_clear_lookup_funcs();
        return nullptr;
    });
    EXPECT_EQ(vstring_sub("${a}"), "simple") << "what was taken off is not asked";
    vstring_push_lookup_func([](const char*) -> const char* {
        vstring_push_lookup_func([](const char*) { return "pushed"; });
        return nullptr;
    });
    EXPECT_EQ(vstring_sub("${a}${a}"), "simplepushed")
        << "a new function is asked from the next name on";
}

TEST_F(VString, DepthIsBounded) {
    // Each level is opened by twice the backslashes of the one before.
    std::string text;
    for (int depth = 0; depth < 21; ++depth)
        text += std::string((std::size_t(1) << depth) / 2, '\\') + '"';
    vstring_set_simple_var("plain", "x");
    vstring_set_simple_var("slash", "\\");
    const auto expand = [&text](const char* reference) {
        return std::string(vstring_sub((text + reference).c_str()));
    };
    EXPECT_EQ(expand("${plain}"), text + "x");
    char* result = nullptr;
    EXPECT_THROW(vstring_sub((text + "${slash}").c_str(), &result), KazMemoryException);
    EXPECT_EQ(result, nullptr);
    text.erase(text.size() - (std::size_t(1) << 19) - 1);
    EXPECT_EQ(expand("${slash}"), text + std::string(std::size_t(1) << 20, '\\'));
}

} // namespace
