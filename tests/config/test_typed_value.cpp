// SPDX-License-Identifier: Apache-2.0
#include "tools/config/typed_value.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

/// A check of @p text: what is not good leaves the default, 77, alone.
template <typename Number, typename Check>
kaz_value_enum checked(Check check, const char* text, Number least, Number greatest,
                       Number expected = 77) {
    Number value = 77;
    const kaz_value_enum result = check(text, least, greatest, &value);
    EXPECT_EQ(result, check(text, least, greatest, nullptr));
    EXPECT_EQ(value, expected) << text;
    return result;
}

TEST(TypedValue, TellsGoodNumbersFromBadOnes) {
    const auto integer = [](const char* text, int value = 77) {
        return checked(kaz_check_integer, text, -1, 2147483647, value);
    };
    for (const auto& [good, value] : {std::pair{"-1", -1},
                                      {"2147483647", 2147483647},
                                      {" +7\t", 7},
                                      {"\r\n42 ", 42},
                                      {"007", 7}})
        EXPECT_EQ(integer(good, value), kaz_value_good) << good;
    for (const char* far : {"-2", "2147483648", "99999999999999999999", "-99999999999999999999"})
        EXPECT_EQ(integer(far), kaz_value_out_of_range) << far;
    for (const char* bad : {"", " ", "abc", "8080x", "1.5", "0x10", "+-1", "++1", "1 2", "1e3"})
        EXPECT_EQ(integer(bad), kaz_value_malformed) << bad;
    EXPECT_EQ(integer(nullptr), kaz_value_missing);

    const auto real = [](const char* text, double value = 77) {
        return checked(kaz_check_real, text, -0.5, 210.0, value);
    };
    for (const auto& [good, value] :
         {std::pair{"-.5", -0.5}, {"210", 210}, {"1e-3", 0.001}, {" +2.25 ", 2.25}})
        EXPECT_EQ(real(good, value), kaz_value_good) << good;
    for (const char* far : {"210.001", "-1", "1e999", "1e-999"})
        EXPECT_EQ(real(far), kaz_value_out_of_range) << far;
    for (const char* bad : {"", "a4", "2,5", "nan", "inf", "-infinity"})
        EXPECT_EQ(real(bad), kaz_value_malformed) << bad;
    EXPECT_EQ(real(nullptr), kaz_value_missing);
}

TEST(TypedValue, ASwitchIsYesOrNoOrNeither) {
    bool value = true;
    EXPECT_EQ(kaz_check_boolean("no", &value), kaz_value_good);
    EXPECT_FALSE(value);
    EXPECT_EQ(kaz_check_boolean(" ja", &value), kaz_value_good);
    EXPECT_TRUE(value);
    for (const char* bad : {"", "maybe", "2"})
        EXPECT_EQ(kaz_check_boolean(bad, &value), kaz_value_malformed) << bad;
    EXPECT_EQ(kaz_check_boolean(nullptr, nullptr), kaz_value_missing);
    EXPECT_TRUE(value);
}

} // namespace
