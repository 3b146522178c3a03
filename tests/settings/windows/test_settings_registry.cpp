// SPDX-License-Identifier: Apache-2.0
// The registry: the types that values have there, and what others have written.
#include "settings/place.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <vector>
#include <windows.h>

namespace {

using namespace settings_test;
using Bytes = std::vector<BYTE>;

struct Value {
    DWORD type;
    Bytes bytes;
    bool operator==(const Value&) const = default;
};
using Values = std::map<std::wstring, Value>;

template <typename Item>
Bytes bytesOf(const Item* items, std::size_t count) {
    const auto* bytes = reinterpret_cast<const BYTE*>(items);
    return {bytes, bytes + count * sizeof(Item)};
}

template <typename Number>
Bytes bytesOf(Number number) {
    return bytesOf(&number, 1);
}

template <std::size_t size>
Bytes text(const wchar_t (&characters)[size]) {
    return bytesOf(characters, size); // with the NUL at its end
}

/// Without the NUL at its end.
template <std::size_t size>
Bytes open(const wchar_t (&characters)[size]) {
    return bytesOf(characters, size - 1);
}

/// A section's key, by the system's own functions.
class SettingsRegistry : public testing::Test {
protected:
    ~SettingsRegistry() override { RegDeleteTreeW(HKEY_CURRENT_USER, path); }

    static void put(const wchar_t* name, const Value& value) {
        ASSERT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, path, name, value.type, value.bytes.data(),
                                  static_cast<DWORD>(value.bytes.size())),
                  ERROR_SUCCESS);
    }
    static Value get(const wchar_t* name) {
        Value value{0, Bytes(1000)};
        auto size = static_cast<DWORD>(value.bytes.size());
        HKEY key = nullptr;
        RegOpenKeyExW(HKEY_CURRENT_USER, path, 0, KEY_READ, &key);
        if (RegQueryValueExW(key, name, nullptr, &value.type, value.bytes.data(), &size) !=
            ERROR_SUCCESS)
            size = 0;
        RegCloseKey(key);
        value.bytes.resize(size);
        return value;
    }
    static bool isThere() {
        HKEY key = nullptr;
        const bool found =
            RegOpenKeyExW(HKEY_CURRENT_USER, path, 0, KEY_READ, &key) == ERROR_SUCCESS;
        RegCloseKey(key);
        return found;
    }

    static constexpr const wchar_t* path = L"Software\\Tarvo\\Mox\\Registry test";
    static constexpr const char* section = "Registry test";
};

TEST_F(SettingsRegistry, EachTypeIsTheSystemsOwn) {
    KazStringColl list;
    for (const char* each : {"a", "", "\xC3\xA4"})
        list.add(each);
    KazSettings s(section);
    s.setText("text", "\xE2\x82\xAC");
    s.setInteger("integer", -2);
    s.setReal("real", 0.25);
    s.setBool("bool", true);
    s.setList("list", list);
    s.setList("none", KazStringColl());
    s.commit();
    EXPECT_EQ(s.getPlace(), "HKEY_CURRENT_USER\\Software\\Tarvo\\Mox\\Registry test");
    EXPECT_EQ(get(L"text"), (Value{REG_SZ, text(L"\x20AC")}));
    EXPECT_EQ(get(L"integer"), (Value{REG_QWORD, bytesOf(std::int64_t{-2})}));
    EXPECT_EQ(get(L"real"), (Value{REG_BINARY, {0, 0, 0, 0, 0, 0, 0xD0, 0x3F}}));
    EXPECT_EQ(get(L"bool"), (Value{REG_BINARY, {1}}));
    EXPECT_EQ(get(L"list"), (Value{REG_MULTI_SZ, text(L"=a\0=\0=\xE4\0")}));
    EXPECT_EQ(get(L"none"), (Value{REG_MULTI_SZ, text(L"")}));
    s.removeAll();
    s.commit();
    EXPECT_FALSE(isThere()); // a key without anything goes
}

TEST_F(SettingsRegistry, WhatOthersHaveWrittenIsReadWhereItIsUnderstood) {
    put(L"narrow", {REG_DWORD, bytesOf(std::uint32_t{0xFFFFFFFF})});
    put(L"open text", {REG_SZ, open(L"ab")});
    put(L"odd text", {REG_SZ, {'a', 0, 'b'}}); // half a character
    put(L"empty text", {REG_SZ, {}});
    put(L"cut text", {REG_SZ, text(L"a\0b")});
    put(L"half", {REG_SZ, text(L"x\xD800y")});
    put(L"open list", {REG_MULTI_SZ, open(L"=a\0=b")});
    const KazSettings s(section);
    EXPECT_EQ(s.getInteger("NARROW"), 0xFFFFFFFF);
    EXPECT_EQ(s.getText("open text"), "ab");
    EXPECT_EQ(s.getText("odd text"), "a");
    EXPECT_EQ(s.getText("empty text", "-"), "");
    EXPECT_EQ(s.getText("cut text"), "a");
    EXPECT_EQ(s.getText("half"), "x\xEF\xBF\xBDy");
    KazStringColl list;
    ASSERT_TRUE(s.getList("open list", list) && list.getSize() == 2);
    EXPECT_EQ(list[0] + list[1], "ab");
}

/// Neither seen nor lost, whatever becomes of the values around it.
TEST_F(SettingsRegistry, WhatIsNotUnderstoodStays) {
    const Values foreign = {
        {L"expanded", {REG_EXPAND_SZ, text(L"%PATH%")}},
        {L"nothing", {REG_NONE, {1, 2}}},
        {L"swapped", {REG_DWORD_BIG_ENDIAN, {0, 0, 0, 1}}},
        {L"short number", {REG_QWORD, bytesOf(std::uint32_t{1})}},
        {L"long number", {REG_DWORD, bytesOf(std::int64_t{1})}},
        {L"no bool", {REG_BINARY, {2}}},
        {L"three bytes", {REG_BINARY, {1, 2, 3}}},
        {L"no real", {REG_BINARY, bytesOf(std::nan(""))}},
        {L"endless", {REG_BINARY, bytesOf(HUGE_VAL)}},
        {L"plain list", {REG_MULTI_SZ, text(L"a\0b\0")}},
        {L"", {REG_SZ, text(L"of the key itself")}},
        {L"a\\b", {REG_SZ, text(L"no name of ours")}},
    };
    for (const auto& [name, value] : foreign)
        put(name.c_str(), value);
    const auto expectAll = [&] {
        for (const auto& [name, value] : foreign)
            EXPECT_EQ(get(name.c_str()), value) << "name of " << name.size() << " characters";
    };
    KazSettings s(section);
    KazStringColl names, list;
    s.getNames(names);
    EXPECT_EQ(names.getSize(), 0);
    EXPECT_EQ(s.getText("expanded", "-") + s.getText("no bool", "-"), "--");
    EXPECT_EQ(s.getInteger("short number", 7) + s.getReal("no real", 7), 14);
    EXPECT_FALSE(s.getBool("no bool") || s.getList("plain list", list) || s.isSet("endless"));
    s.setInteger("own", 1);
    s.remove("expanded"); // which is not set
    s.commit();
    expectAll();
    s.removeAll();
    s.commit();
    expectAll();
    EXPECT_FALSE(KazSettings(section).isSet("own"));
    // Who gives the name a value means it.
    s.setText("expanded", "ours");
    s.commit();
    EXPECT_EQ(get(L"expanded"), (Value{REG_SZ, text(L"ours")}));
}

} // namespace
