// SPDX-License-Identifier: Apache-2.0
#include "tools/config/typed_value.h"

#include "testkit/random.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cstdint>
#include <string>

namespace {

/// A check of @p text, and whether it left the default alone unless the text was good.
template <typename Number, typename Check>
kaz_value_enum checked(Check check, const char* text, Number least, Number greatest,
                       Number* number = nullptr) {
    Number value = 77;
    const kaz_value_enum result = check(text, least, greatest, &value);
    EXPECT_EQ(result, check(text, least, greatest, nullptr));
    EXPECT_TRUE(result == kaz_value_good || value == 77) << text;
    if (number != nullptr)
        *number = value;
    return result;
}

TEST(TypedValue, TellsGoodNumbersFromBadOnes) {
    const auto integer = [](const char* text) {
        return checked(kaz_check_integer, text, 1, 65535);
    };
    for (const char* good : {"1", "65535", " +7\t", "\r\n42 ", "007"})
        EXPECT_EQ(integer(good), kaz_value_good) << good;
    for (const char* far : {"0", "65536", "-1", "99999999999999999999", "-99999999999999999999"})
        EXPECT_EQ(integer(far), kaz_value_out_of_range) << far;
    for (const char* bad : {"", " ", "abc", "8080x", "1.5", "0x10", "+-1", "++1", "1 2", "1e3"})
        EXPECT_EQ(integer(bad), kaz_value_malformed) << bad;
    EXPECT_EQ(integer(nullptr), kaz_value_missing);

    const auto real = [](const char* text) { return checked(kaz_check_real, text, -0.5, 210.0); };
    for (const char* good : {"-.5", "210", "1e-3", " +2.25 "})
        EXPECT_EQ(real(good), kaz_value_good) << good;
    for (const char* far : {"210.001", "-1", "1e999", "1e-999"})
        EXPECT_EQ(real(far), kaz_value_out_of_range) << far;
    for (const char* bad : {"", "a4", "2,5", "nan", "inf", "-infinity"})
        EXPECT_EQ(real(bad), kaz_value_malformed) << bad;
    EXPECT_EQ(real(nullptr), kaz_value_missing);
}

TEST(TypedValue, NumbersComeBackAsTheyWereWritten) {
    moxkit::Random random(moxkit::seed());
    for (int i = 0; i < 2000; ++i) {
        const auto wanted =
            std::int64_t{random.between(-1000000000, 1000000000)} * random.between(1, 5);
        const bool fits = wanted >= INT_MIN && wanted <= INT_MAX;
        int number = 0;
        EXPECT_EQ(checked(kaz_check_integer, std::to_string(wanted).c_str(), INT_MIN, INT_MAX,
                          &number) == kaz_value_good,
                  fits);
        EXPECT_EQ(number, fits ? wanted : 77);
        double real = 0;
        EXPECT_EQ(checked(kaz_check_real, std::to_string(wanted).c_str(), -DBL_MAX, DBL_MAX, &real),
                  kaz_value_good);
        EXPECT_EQ(real, static_cast<double>(wanted));
    }
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
