// SPDX-License-Identifier: Apache-2.0
#include "tools/config/vstring.h"

#include "tools/app/exceptions/KazMemoryException.h"
#include "tools/config/toolinfo.h"

#include "testkit/director.h"
#include "testkit/env.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <string>

namespace {

std::string expand(const std::string& text) {
    char* result = nullptr;
    EXPECT_TRUE(vstring_sub(text.c_str(), &result));
    const std::string copy = result;
    std::free(result);
    return copy;
}

std::map<std::string, std::string> variables;

const char* lookUpVariable(const char* name) {
    const auto found = variables.find(name);
    return found == variables.end() ? nullptr : found->second.c_str();
}

/// No ToolInfo file is there; the fatal error about it returns.
class VString : public testing::Test {
protected:
    void TearDown() override {
        vstring_clear_lookup_funcs();
        variables.clear();
    }
    moxkit::ScopedEnv toolInfo{"ToolInfo", "/no/such/file"};
    moxkit::RecordingDirector director;
};

TEST_F(VString, NullIsAnEmptyTextAndNoFunction) {
    EXPECT_EQ(vstring_lookup_var(nullptr), nullptr);
    EXPECT_TRUE(vstring_push_lookup_func(nullptr));
    vstring_set_simple_var(nullptr, "unnamed");
    vstring_set_simple_var("empty", nullptr);
    EXPECT_EQ(expand("${}|${empty}|${none}"), "unnamed||");
    EXPECT_EQ(vstring_num_vars(nullptr), 0);
    EXPECT_FALSE(vstring_sub("text", nullptr));
    char* result = nullptr;
    EXPECT_TRUE(vstring_sub(nullptr, &result));
    EXPECT_STREQ(result, "");
    std::free(result);
}

/// Answers by an expansion of its own, longer than the one that asks.
const char* lookUpByExpansion(const char* name) {
    static std::string answer;
    if (std::strcmp(name, "outer") != 0)
        return nullptr;
    answer = expand(std::string(5000, 'i') + "${inner}");
    return answer.c_str();
}

TEST_F(VString, ResolversMayExpandPushAndPop) {
    vstring_set_simple_var("inner", "!");
    vstring_push_lookup_func(lookUpByExpansion);
    EXPECT_EQ(expand("<${outer}${outer}>"),
              "<" + std::string(5000, 'i') + "!" + std::string(5000, 'i') + "!>");
    vstring_set_simple_var("a", "simple");
    variables["a"] = "pushed";
    for (int i = 0; i < 5; ++i)
        vstring_push_lookup_func([](const char*) { return "gone"; });
    vstring_push_lookup_func([](const char*) -> const char* {
        vstring_clear_lookup_funcs();
        return nullptr;
    });
    EXPECT_EQ(expand("${a}"), "simple") << "what was taken off is not asked";
    vstring_push_lookup_func([](const char*) -> const char* {
        vstring_push_lookup_func(lookUpVariable);
        return nullptr;
    });
    EXPECT_EQ(expand("${a}${a}"), "simplepushed")
        << "a new function is asked from the next name on";
}

TEST_F(VString, AResolverWithDataIsAskedForIt) {
    EXPECT_TRUE(vstring_push_lookup_func(nullptr, this));
    vstring_set_simple_var("a", "simple");
    const auto member = [](const char* name, void* data) -> const char* {
        const auto& known = *static_cast<std::map<std::string, std::string>*>(data);
        const auto found = known.find(name);
        return found == known.end() ? nullptr : found->second.c_str();
    };
    std::map<std::string, std::string> lower = {{"a", "lower"}, {"b", "B"}}, upper = {{"a", "A"}};
    vstring_push_lookup_func(member, &lower);
    vstring_push_lookup_func(member, &upper);
    EXPECT_EQ(expand("${a}${b}"), "AB");
    EXPECT_EQ(vstring_sub("<${a}${b}${c}>"), "<AB>") << "as a string";
    vstring_pop_lookup_func();
    EXPECT_EQ(expand("${a}${b}"), "lowerB");
    vstring_pop_lookup_func();
    EXPECT_EQ(expand("${a}${b}"), "simple");
    EXPECT_EQ(vstring_sub(nullptr), "");
}

TEST_F(VString, DepthIsBounded) {
    // Each level is opened by twice the backslashes of the one before.
    std::string text;
    for (int depth = 0; depth < 21; ++depth)
        text += std::string((std::size_t(1) << depth) / 2, '\\') + '"';
    vstring_set_simple_var("plain", "x");
    vstring_set_simple_var("slash", "\\");
    EXPECT_EQ(expand(text + "${plain}"), text + "x");
    char* result = nullptr;
    EXPECT_THROW(vstring_sub((text + "${slash}").c_str(), &result), KazMemoryException);
    EXPECT_EQ(result, nullptr);
    text.erase(text.size() - (std::size_t(1) << 19) - 1);
    EXPECT_EQ(expand(text + "${slash}"), text + std::string(std::size_t(1) << 20, '\\'));
}

} // namespace
