// SPDX-License-Identifier: Apache-2.0
/// @file
/// The names that there are: offered while a command line is typed, and when one is
/// misspelt.
#pragma once

#include "tools/app/KazCommandLine.h"
#include "tools/containers/KazStringColl.h"

#include <string>

/// The systems of a project's directory, in order; none where it cannot be read.
KazStringColl systemsOf(const KazString& project);

/// The diagram that a file belongs to, "" for none: its name up to the first point that
/// does not begin it. Files whose names begin with a point are nobody's.
KazString diagramOf(const KazString& file);

/// The completer of the command line: systems of the project that is typed already, and
/// diagrams of its system.
void offerNames(const char* option, const char* begin, KazCommandLine::Offer offer, void* data);
