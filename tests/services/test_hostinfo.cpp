// SPDX-License-Identifier: Apache-2.0
// Machine and user: what must hold everywhere.
#include "tools/services/hostinfo.h"

#include "tools/services/KazGuid.h"

#include <gtest/gtest.h>
#include <string>

namespace {

TEST(HostInfo, NamesAreThereAndAgree) {
    const std::string host = kazHostName().getValue();
    EXPECT_FALSE(host.empty());
    EXPECT_EQ(host.find('.'), std::string::npos);
    EXPECT_EQ(std::string(kazFullHostName().getValue()).substr(0, host.size()), host);
    EXPECT_FALSE(kazUserName().isEmpty());
    EXPECT_FALSE(kazUserFullName().isEmpty());
    EXPECT_GE(kazSystemName().find(" x86_64"), 0);
}

TEST(HostInfo, TheIdentityOfAMachineStays) {
    KazGuid guid;
    ASSERT_TRUE(KazGuid::parse(kazHostId().getValue(), guid));
    EXPECT_EQ(guid.getVersion(), 5);
    EXPECT_EQ(kazHostId(), kazHostId());
}

} // namespace
