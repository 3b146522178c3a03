// SPDX-License-Identifier: Apache-2.0
/// @file
/// One cell of the tool environment.
#pragma once

#include "tools/export.h"
#include "tools/strings/KazString.h"

/// Holds one value of the tool environment (see kazenv.h): whether the tool
/// assigned it, whether there is any text at all, and the text. The tools
/// context owns one cell for each value; tools use the accessors, not the cells.
class KAZ_API KazEnvValue {
public:
    KazEnvValue() = default;

    /// True after assign(), until clear(): the text came from the tool itself
    /// and goes before the command line and the configuration.
    bool isAssigned() const { return assigned_; }

    /// True while the cell holds no text; an empty text is a text.
    bool isNull() const { return null_; }

    /// The text, or null when there is none. Valid until the cell changes.
    const char* getText() const { return null_ ? nullptr : text_.getValue(); }

    /// Makes @p newText (null counts as "") the tool's own value.
    void assign(const char* newText);

    /// Remembers @p newText as found elsewhere; null means found nowhere. A text
    /// equal to the one held leaves the cell, and pointers into it, alone.
    void keep(const char* newText);

    /// Back to the state after construction.
    void clear();

private:
    bool assigned_ = false;
    bool null_ = true;
    KazString text_;
};
