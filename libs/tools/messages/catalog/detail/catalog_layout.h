// SPDX-License-Identifier: Apache-2.0
/// @file
/// The layout of a message file, for those who read and write it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kaz::detail::catalog {

/// "MZAK" in the file, which is little-endian.
inline constexpr std::uint32_t magic = 0x4B415A4D;
/// Blocks of numbers that a file can hold, and entries in each.
inline constexpr int blockCount = 62;
inline constexpr int entryCount = 256;
/// The highest number that a file can hold.
inline constexpr int lastNumber = blockCount * entryCount - 1;

/// Offsets are kept as multiples of this, in 16 bits.
inline constexpr long unit = 16;
inline constexpr long lastOffset = 65535 * unit;
/// Magic number and block directory; an index table; a text with its NUL.
inline constexpr std::size_t headerSize = 4 + 2 * blockCount;
inline constexpr std::size_t tableSize = 2 * entryCount;
inline constexpr std::size_t recordSize = 128;

inline std::uint16_t wordAt(const unsigned char* bytes) {
    return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}

inline std::uint32_t longAt(const unsigned char* bytes) {
    return wordAt(bytes) | static_cast<std::uint32_t>(wordAt(bytes + 2)) << 16;
}

} // namespace kaz::detail::catalog
