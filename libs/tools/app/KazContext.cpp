// SPDX-License-Identifier: Apache-2.0
#include "tools/app/KazContext.h"

KazContext::~KazContext() = default;
