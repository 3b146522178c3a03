// SPDX-License-Identifier: Apache-2.0
/// @file
/// Moved: include tools/app/failures/KazFileException.h. This place goes with the next major
/// version.
#pragma once

#include "tools/app/failures/KazFileException.h"
