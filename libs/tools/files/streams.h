// SPDX-License-Identifier: Apache-2.0
/// @file
/// Standard streams that carry bytes and no text.
#pragma once

#include "tools/export.h"

#include <cstdio>

/// Makes a standard stream pass every byte as it is, as a file opened with "b" does; to be
/// called before anything is read or written there. Nothing for null.
KAZ_API void TI_passBytes(FILE* stream);
