// SPDX-License-Identifier: Apache-2.0
// Of a picture only its size is looked at: it goes into the document as it is. Every number of
// the file is another's claim: what lies beyond the end reads as 0, each step along the file goes
// forward, and sizes are limited before anything is computed from them.
#include "tools/formats/detail/picture_file.h"

#include "tools/platform/host.h"

#include <algorithm>

namespace kaz::detail {

namespace {

/// A document holds the picture as text of up to twice its size, and a string ends at 2 GB.
constexpr std::size_t mostBytes = std::size_t{32} << 20;

/// False when there is more than that, or what there is cannot be read.
bool readWhole(const char* path, std::string& bytes) {
    const host::ReadableFile file(path);
    if (!file.isOpen())
        return false;
    // Grown with what is really there: the size that a file system states may be 0 or old.
    constexpr std::size_t step = 65536;
    for (std::size_t got = step; got == step && bytes.size() <= mostBytes;) {
        const std::size_t size = bytes.size();
        bytes.resize(size + step);
        got = file.read(size, &bytes[size], step);
        bytes.resize(size + got);
    }
    return bytes.size() <= mostBytes;
}

/// Big-endian; 0 beyond the end.
unsigned numberAt(const std::string& bytes, std::size_t at, std::size_t size) {
    unsigned value = 0;
    for (std::size_t i = at; i < at + size; ++i)
        value = value << 8 | (i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0U);
    return value;
}

bool takeSize(Picture& picture, unsigned width, unsigned height) {
    // PNG allows no more than 31 bits; products with this and a measure fit 64 bits.
    constexpr unsigned most = 0x7FFFFFF;
    picture.pixelsWide = static_cast<int>(std::min(width, most));
    picture.pixelsHigh = static_cast<int>(std::min(height, most));
    return width > 0 && height > 0;
}

/// Goes along the segments to the one that begins a frame.
bool takeJpegSize(Picture& picture) {
    const std::string& bytes = picture.bytes;
    for (std::size_t at = 2; at + 9 <= bytes.size() && numberAt(bytes, at, 1) == 0xFF;) {
        const unsigned marker = numberAt(bytes, at + 1, 1);
        if (marker == 0xFF) { // may fill up
            ++at;
            continue;
        }
        // C0 to CF begin frames but for these three: tables of Huffman codes, a mark that is
        // reserved, and tables of arithmetic codes.
        const bool isTable = marker == 0xC4 || marker == 0xC8 || marker == 0xCC;
        if (marker >= 0xC0 && marker <= 0xCF && !isTable)
            // Behind the length come one byte of precision, the height and the width.
            return takeSize(picture, numberAt(bytes, at + 7, 2), numberAt(bytes, at + 5, 2));
        // A length counts its own two bytes; a smaller one is damage, and would stand still.
        at += 2 + std::max(2U, numberAt(bytes, at + 2, 2));
    }
    return false;
}

int inRange(std::int64_t measure) {
    return static_cast<int>(std::clamp<std::int64_t>(measure, 1, longestMeasure));
}

} // namespace

bool readPicture(const char* path, Picture& picture) {
    picture.path = path;
    if (!readWhole(path, picture.bytes))
        return false;
    // The content decides and not the suffix, which is often wrong.
    picture.isPng = picture.bytes.starts_with("\x89PNG\r\n\x1A\n");
    if (picture.isPng)
        return picture.bytes.size() >= 24 && picture.bytes.compare(12, 4, "IHDR") == 0 &&
               takeSize(picture, numberAt(picture.bytes, 16, 4), numberAt(picture.bytes, 20, 4));
    return picture.bytes.starts_with("\xFF\xD8\xFF") && takeJpegSize(picture);
}

void scalePicture(Picture& picture, int width, int height) {
    const std::int64_t wide = picture.pixelsWide, high = picture.pixelsHigh;
    // 96 pixels an inch of 25.4 mm, as browsers count them.
    if (width < 1 && height < 1) {
        picture.width = inRange(rounded(wide * 254, 96));
        picture.height = inRange(rounded(high * 254, 96));
        return;
    }
    width = std::min(width, longestMeasure);
    height = std::min(height, longestMeasure);
    // One measure keeps the shape; products stay below 2^42.
    picture.width = inRange(width > 0 ? width : rounded(height * wide, high));
    picture.height = inRange(height > 0 ? height : rounded(width * high, wide));
}

} // namespace kaz::detail
