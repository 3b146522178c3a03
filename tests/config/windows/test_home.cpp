// SPDX-License-Identifier: Apache-2.0
// Where "~" leads when HOME names no directory: the other two ways, one after the other.
#include "tools/config/toolinfo.h"

#include "testkit/env.h"
#include "testkit/temp_tree.h"

#include <gtest/gtest.h>
#include <string>
#include <windows.h>

namespace {

constexpr char substitute[] = "Software\\moxtools-test";
constexpr char shellFolders[] =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

/// A user without any settings, for this process alone.
class FreshUser {
public:
    FreshUser() {
        const std::string own = std::string(substitute) + std::to_string(GetCurrentProcessId());
        RegCreateKeyA(HKEY_CURRENT_USER, own.c_str(), &key_);
        RegOverridePredefKey(HKEY_CURRENT_USER, key_);
        name_ = own;
    }
    ~FreshUser() {
        RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
        RegCloseKey(key_);
        RegDeleteTreeA(HKEY_CURRENT_USER, name_.c_str());
    }
    FreshUser(const FreshUser&) = delete;
    FreshUser& operator=(const FreshUser&) = delete;

    static void setRoamingData(const std::string& directory) {
        HKEY folders = nullptr;
        ASSERT_EQ(RegCreateKeyA(HKEY_CURRENT_USER, shellFolders, &folders), ERROR_SUCCESS);
        RegSetValueExA(folders, "AppData", 0, REG_SZ,
                       reinterpret_cast<const BYTE*>(directory.c_str()),
                       static_cast<DWORD>(directory.size() + 1));
        RegCloseKey(folders);
    }

private:
    HKEY key_ = nullptr;
    std::string name_;
};

TEST(Home, IsInTheRoamingDataElse) {
    const moxkit::TempTree tree;
    const FreshUser user;
    FreshUser::setRoamingData(tree.native());
    for (const char* none : {static_cast<const char*>(nullptr), "Q:\\no\\such\\directory"}) {
        const moxkit::ScopedEnv home("HOME", none);
        EXPECT_EQ(_TI_hm("~\\x"), tree.native("Tarvo/Mox/x"));
    }
    EXPECT_TRUE(tree.exists("Tarvo/Mox"));
    EXPECT_FALSE(tree.exists("Tarvo/Mox/x"));
    FreshUser::setRoamingData("Q:\\cannot\\be\\made");
    const moxkit::ScopedEnv home("HOME", nullptr);
    EXPECT_STREQ(_TI_hm("~\\x"), "Q:\\cannot\\be\\made\\Tarvo\\Mox\\x");
}

TEST(Home, IsInTheProfileAtLastAndInQuotes) {
    const moxkit::TempTree tree;
    const FreshUser user;
    const moxkit::ScopedEnv home("HOME", nullptr);
    for (const bool empty : {false, true}) {
        if (empty)
            FreshUser::setRoamingData("");
        const moxkit::ScopedEnv profile("USERPROFILE", tree.native("me").c_str());
        tree.mkdir("me");
        const std::string place = tree.native("me/Application Data/Tarvo/Mox");
        EXPECT_EQ(_TI_hm("~/x"), "\"" + place + "\\x\"");
        EXPECT_EQ(_TI_hm("~"), "\"" + place + "\\\"");
        EXPECT_TRUE(tree.exists("me/Application Data/Tarvo/Mox"));
    }
    const moxkit::ScopedEnv profile("USERPROFILE", nullptr);
    EXPECT_STREQ(_TI_hm("~/x"), "~/x");
}

} // namespace
