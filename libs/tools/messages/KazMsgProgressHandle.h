// SPDX-License-Identifier: Apache-2.0
/// @file
/// A progress handle whose messages appear as ordinary messages too.
#pragma once

#include "tools/messages/KazProgressHandle.h"

/// Messages go to the progress and then, as formatted text of at most 2047
/// characters, to KazIODirector::printMsg() as its format: "%%" in that text
/// becomes "%". Anything else that looks like a conversion appears as it is,
/// since there are no arguments for it.
class KAZ_API KazMsgProgressHandle : public KazProgressHandle {
public:
    /// Opens the progress @p name, as KazProgressHandle does.
    KazMsgProgressHandle(KazString name, int n);
    KazMsgProgressHandle(const KazMsgProgressHandle&) = default;
    KazMsgProgressHandle& operator=(const KazMsgProgressHandle&) = default;
    ~KazMsgProgressHandle() override;

    KAZ_PRINTF(3, 0)
    void vMsg(int level, const char* format, va_list args) override;
};
