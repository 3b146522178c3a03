// SPDX-License-Identifier: Apache-2.0
/// @file
/// Cuts a wide string into tokens.
#pragma once

#include "tools/export.h"
#include "tools/strings/KazWString.h"

#include <cstdint>

/// KazStringTokenizer over 16-bit text: the same steps, ownership and copies.
class KAZ_API KazWStringTokenizer {
public:
    /// Null @p delimiters count as "": the whole text is one token.
    KazWStringTokenizer(const KazWString& text, const unsigned short* delimiters);
    /// Goes on by itself from where @p o stands.
    KazWStringTokenizer(const KazWStringTokenizer& o);
    KazWStringTokenizer& operator=(const KazWStringTokenizer& o);
    virtual ~KazWStringTokenizer();

    /// The next token, without one carriage return at its end; empty once
    /// finished. With @p skipRuns a run of delimiters counts as one.
    virtual KazWString nextString(bool skipRuns);

    /// Whether all tokens have been handed out. Both names mean the same.
    bool isDone() const { return position < 0; }
    bool isFinished() const { return isDone(); }

protected:
    /// The token from @p start to the delimiter at @p found (-1: the end), and
    /// the position for the next one.
    KazWString takeToken(int start, int found, bool skipRuns);
    /// Where the next token starts.
    int tokenStart() const { return position > 0 ? position + 1 : position; }

    KazWString text;            ///< what is left to read of it begins at position
    unsigned short* delimiters; ///< owned
    /// Where the next token starts, or the delimiter that ended the previous
    /// one; -1 when finished.
    std::int32_t position;
};
