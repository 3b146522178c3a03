#include "tools/config/vstring.h"

#include "tools/app/KazMemoryException.h"
#include "tools/config/toolinfo.h"

#include "kit/alloc_failure.h"
#include "kit/director.h"
#include "kit/env.h"
#include "kit/random.h"

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
    kit::ScopedEnv toolInfo{"ToolInfo", "/no/such/file"};
    kit::RecordingDirector director;
};

/// The expansion character by character, without a thought of buffers.
std::string expandedByTheBook(const std::string& text) {
    std::string out;
    unsigned depth = 0;
    std::size_t backslashes = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text.compare(at, 2, "${") == 0) {
            const std::size_t end = text.find('}', at + 2);
            const auto found = end == text.npos ? variables.end()
                                                : variables.find(text.substr(at + 2, end - at - 2));
            if (found != variables.end())
                for (const char v : found->second)
                    out.append(v == '\\' ? std::size_t(1) << depth : 1, v);
            at = end == text.npos ? at + 1 : end;
        } else {
            if (text[at] == '"' && backslashes == (1U << depth) / 2)
                ++depth;
            else if (text[at] == '"' && backslashes == (1U << depth) / 4)
                --depth;
            out += text[at];
        }
        backslashes = text[at] == '\\' ? backslashes + 1 : 0;
    }
    return out;
}

TEST_F(VString, ExpandsRandomTextsByTheBook) {
    SCOPED_TRACE(kit::seedText());
    kit::Random rng(kit::seed());
    vstring_push_lookup_func(lookUpVariable);
    const char* pieces[] = {"\\",      "\\",  "\"", "\"",   "\\\"", "$",
                            "{",       "}",   "${", "${a}", "${b}", "${long}",
                            "${none}", "${}", "x",  " ",    "$$",   "\\\\\\\""};
    for (int round = 0; round < 3000; ++round) {
        variables = {{"a", rng.text(4, "\\x\"$")},
                     {"b", "${a}"},
                     {"", "empty"},
                     {"long", std::string(static_cast<std::size_t>(rng.between(0, 1100)),
                                          rng.oneIn(4) ? '\\' : 'l')}};
        std::string text(static_cast<std::size_t>(rng.oneIn(3) ? rng.between(1000, 1030) : 0), 'p');
        for (int n = rng.below(20); n > 0; --n)
            text += pieces[rng.below(std::size(pieces))];
        ASSERT_EQ(expand(text), expandedByTheBook(text)) << text;
    }
}

TEST_F(VString, ResolversAreAskedFromTheTopDown) {
    vstring_set_simple_var("a", "simple");
    vstring_set_simple_var("ti.dir", "simple");
    vstring_set_simple_var("tidir", "simple");
    vstring_set_simple_var("empty", nullptr);
    EXPECT_EQ(expand("${a}|${ti.dir}|${empty}|${none}"), "simple|simple||");
    TI_Var("dir=configured");
    TI_Var("a.b=deep");
    EXPECT_EQ(expand("${ti.dir}|${tixyz.dir}|${TI.dir}|${tidir}|${ti.a.b}|${ti.}"),
              "configured|configured||simple|deep|");
    variables = {{"ti.dir", "tool"}, {"a", ""}};
    EXPECT_TRUE(vstring_push_lookup_func(lookUpVariable));
    EXPECT_EQ(expand("${a}|${ti.dir}"), "|tool");
    EXPECT_TRUE(vstring_push_lookup_func([](const char*) { return "all"; }));
    EXPECT_EQ(expand("${a}|${ti.dir}|${none}"), "all|all|all");
    vstring_pop_lookup_func();
    EXPECT_EQ(expand("${a}|${ti.dir}"), "|tool");
    EXPECT_TRUE(vstring_clear_lookup_funcs());
    for (int i = 0; i < 3; ++i)
        vstring_pop_lookup_func();
    EXPECT_EQ(expand("${a}|${ti.dir}"), "simple|configured");
    vstring_set_simple_var("a", "again");
    EXPECT_STREQ(vstring_lookup_var("a"), "again");

    EXPECT_EQ(vstring_lookup_var(nullptr), nullptr);
    EXPECT_TRUE(vstring_push_lookup_func(nullptr));
    vstring_set_simple_var(nullptr, "unnamed");
    EXPECT_EQ(expand("${}${none}"), "unnamed");
}

TEST_F(VString, CountsWhatIsNotEscaped) {
    const std::map<std::string, int> counts = {
        {"", 0},  {"${a}${a}", 2}, {"\\${a}", 0}, {"\\\\${a}", 1}, {"\\\\\\${a}", 0}, {"${", 1},
        {"$", 0}, {"$${", 1},      {"${${", 2},   {"\\", 0},       {"$\\{", 0},       {"\\a${", 1}};
    for (const auto& [text, count] : counts)
        EXPECT_EQ(vstring_num_vars(text.c_str()), count) << text;
    EXPECT_EQ(vstring_num_vars(nullptr), 0);
    EXPECT_FALSE(vstring_sub("text", nullptr));
    char* result = nullptr;
    EXPECT_TRUE(vstring_sub(nullptr, &result));
    EXPECT_STREQ(result, "");
    std::free(result);
    vstring_set_simple_var("a", "x");
    EXPECT_EQ(expand("\\${a}"), "\\x") << "the backslash that counts there does not here";
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

TEST_F(VString, LongAndHostileTextsEnd) {
    vstring_set_simple_var("a", "value");
    std::string openings, quotes, expected;
    for (int i = 0; i < 100000; ++i) {
        openings += "${";
        quotes += i % 2 == 0 ? "\"${a}" : "\\\"${a}";
        expected += i % 2 == 0 ? "\"value" : "\\\"value";
    }
    EXPECT_EQ(expand(openings), "");
    EXPECT_EQ(expand(quotes), expected);
}

TEST_F(VString, EndsWellWhenMemoryRunsOut) {
    vstring_set_simple_var("a", "a value that is long enough to need memory of its own");
    std::string text, expected;
    for (int i = 0; i < 2000; ++i) {
        text += "${a}";
        expected += "a value that is long enough to need memory of its own";
    }
    char* result = nullptr;
    const auto action = [&] {
        vstring_sub(text.c_str(), &result);
        std::free(result);
        result = nullptr;
    };
    const long failures = kit::sweepAllocations(action, [&] {
        EXPECT_EQ(result, nullptr);
        EXPECT_EQ(expand("${a}").size(), 53U);
    });
    EXPECT_GT(failures, 0);
    EXPECT_TRUE(expand(text) == expected);
}

} // namespace
