// SPDX-License-Identifier: Apache-2.0
/// @file
/// Moved: include tools/config/KazFilePath.h. This place goes with the next major version.
#pragma once

#include "tools/config/KazFilePath.h"
