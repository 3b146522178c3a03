// SPDX-License-Identifier: Apache-2.0
/// @file
/// Pictures for documents.
#pragma once

#include "tools/formats/detail/DocumentFormat.h"

namespace kaz::detail {

/// Reads a PNG or JPEG file of at most 32 MiB, by native path. False for any other, and for
/// one that cannot be read to its end or has no pixels.
bool readPicture(const char* path, Picture& picture);

/// Takes over width and height in tenths of a millimetre; 0 for one means in proportion,
/// 0 for both 96 pixels an inch.
void scalePicture(Picture& picture, int width, int height);

} // namespace kaz::detail
