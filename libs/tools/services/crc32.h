// SPDX-License-Identifier: Apache-2.0
/// @file
/// CRC-32 as in IEEE 802.3, ISO 3309, gzip and PNG: polynomial 0x04C11DB7, reflected, initial
/// value and final exclusive-or 0xFFFFFFFF. The check value of "123456789" is 0xCBF43926.
///
/// A checksum finds accidents; it does not protect against anybody.
#pragma once

#include "tools/export.h"

#include <cstddef>
#include <cstdint>

/// The checksum of what @p crc stands for with @p size more bytes behind it. Begin with 0. Null
/// data gives @p crc.
KAZ_API std::uint32_t kaz_crc32(std::uint32_t crc, const void* data, std::size_t size);

/// The checksum of two texts in a row from theirs and the size of the second. Time is logarithmic
/// in that size.
KAZ_API std::uint32_t kaz_crc32_combine(std::uint32_t first, std::uint32_t second,
                                        std::uint64_t secondSize);

/// The checksum and size of a regular file (links followed; null counts as ""). 0, or -1 with errno
/// set and both results unchanged; results may be null. EISDIR for a directory, EINVAL for any
/// other special file: neither is opened.
KAZ_API int kaz_crc32_file(const char* path, std::uint32_t* crc, std::uint64_t* size);
