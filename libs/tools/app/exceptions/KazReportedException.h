// SPDX-License-Identifier: Apache-2.0
/// @file
/// A failure that the user has already been told about.
#pragma once

#include "tools/app/exceptions/KazException.h"

/// Ends the tool with status 1 and without another word: its message is empty,
/// because whoever throws it has reported the failure.
class KAZ_API KazReportedException : public KazException {
public:
    KazReportedException();
    KazReportedException(const KazReportedException&) = default;
    KazReportedException& operator=(const KazReportedException&) = default;
    ~KazReportedException() override;
};
