// SPDX-License-Identifier: Apache-2.0
#include "tools/app/exceptions/KazReportedException.h"

KazReportedException::KazReportedException() = default;
KazReportedException::~KazReportedException() = default;
