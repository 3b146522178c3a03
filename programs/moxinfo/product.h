// SPDX-License-Identifier: Apache-2.0
/// @file
/// Product information: what is installed, and whether it is all there and
/// undamaged. It proves nothing about who made it.
#pragma once

#include "common/output.h"

#include <string>
#include <vector>

/// The product information file that @p which means: "." this installation's, a
/// path (it holds a separator or names a file), or a product's name. "" where
/// that cannot be told.
std::string productFile(const std::string& which);

/// Shows what a file says and which of its parts are not as it says; with @p
/// all every part. False for any problem, which has been told.
bool showProduct(const std::string& file, bool all, LineOutput& output);

/// Measures every part of @p file anew, and @p more, paths relative to its
/// directory; then writes it to @p target. False, and told, when that failed:
/// nothing is written then.
bool updateProduct(const std::string& file, const std::vector<std::string>& more,
                   const std::string& target);
