// SPDX-License-Identifier: Apache-2.0
/// @file
/// What the plain functions do when memory runs out.
#pragma once

#include "tools/export.h"

/// Throws KazMemoryException. While the application's debug flag is set, first
/// writes "Memory allocation failed in function '<functionName>', exiting." to
/// the standard error stream, with "(null)" for a null name. Allocates nothing
/// for the message.
[[noreturn]] KAZ_API void memory_panic(const char* functionName);
