// SPDX-License-Identifier: Apache-2.0
#include "tools/app/exceptions/KazTreeClashException.h"

KazTreeClashException::KazTreeClashException(void* clashData) : clashData_(clashData) {}
KazTreeClashException::~KazTreeClashException() = default;
