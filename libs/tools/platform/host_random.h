// SPDX-License-Identifier: Apache-2.0
/// @file
/// A part of the door to the operating system (see host.h): unpredictable bytes, and
/// the digest that identifiers are made from.
#pragma once

#include <cstddef>

namespace kaz::host {

/// Fills @p size bytes from the system's cryptographic source.
int randomBytes(void* to, std::size_t size);

/// Another number in each process that was forked from this one: what must not be
/// used twice (random bytes in stock) is dropped when it changes. A call of a function
/// without a system call.
unsigned processGeneration();

/// A SHA-1 digest. It names things; nobody may rely on it against anybody.
using Sha1Digest = unsigned char[20];

/// The digest of two texts in a row.
int sha1(const void* first, std::size_t firstSize, const void* second, std::size_t secondSize,
         Sha1Digest& digest);

} // namespace kaz::host
