// SPDX-License-Identifier: Apache-2.0
/// @file
/// Cuts a string into tokens.
#pragma once

#include "tools/export.h"
#include "tools/strings/KazString.h"

#include <cstdint>

/// Hands out the pieces of a text that delimiter characters separate.
///
/// @code
///   KazStringTokenizer words("a,b,,c", ",");
///   while (!words.isDone())
///       use(words.nextString(true));   // "a", "b", "c"; with false also ""
/// @endcode
///
/// Leading and trailing delimiters are trimmed when it is constructed. It owns
/// a copy of the text (shared) and of the delimiter set; copies of a tokenizer
/// go on independently from the same position.
class KAZ_API KazStringTokenizer {
public:
    /// Null @p delimiters count as "": the whole text is one token.
    KazStringTokenizer(const KazString& text, const char* delimiters);
    /// Goes on by itself from where @p o stands.
    KazStringTokenizer(const KazStringTokenizer& o);
    KazStringTokenizer& operator=(const KazStringTokenizer& o);
    virtual ~KazStringTokenizer();

    /// The next token, without one carriage return at its end; empty once
    /// finished. With @p skipRuns a run of delimiters counts as one.
    virtual KazString nextString(bool skipRuns);

    /// Whether all tokens have been handed out. Both names mean the same.
    bool isDone() const { return position < 0; }
    bool isFinished() const { return isDone(); }

protected:
    /// The token from @p start to the delimiter at @p found (-1: the end), and
    /// the position for the next one.
    KazString takeToken(int start, int found, bool skipRuns);
    /// Where the next token starts.
    int tokenStart() const { return position > 0 ? position + 1 : position; }

    KazString text;   ///< what is left to read of it begins at position
    char* delimiters; ///< owned
    /// Where the next token starts, or the delimiter that ended the previous
    /// one; -1 when finished.
    std::int32_t position;
};
