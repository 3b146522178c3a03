// SPDX-License-Identifier: Apache-2.0
/// @file
/// Cuts a string into tokens, with quotes and escapes.
#pragma once

#include "tools/strings/KazStringTokenizer.h"

/// A KazStringTokenizer for which a delimiter between quotes or behind an
/// escape character is part of the token.
///
/// A quote ends with the character that opened it, or with the text. Quotes and
/// escapes stay in the token; KazString::dequote() removes them.
class KAZ_API KazQuotedStringTokenizer : public KazStringTokenizer {
public:
    /// Null sets count as "".
    KazQuotedStringTokenizer(const KazString& text, const char* delimiters, const char* quotes,
                             char escape);
    /// Goes on by itself from where @p o stands.
    KazQuotedStringTokenizer(const KazQuotedStringTokenizer& o);
    KazQuotedStringTokenizer& operator=(const KazQuotedStringTokenizer& o);
    ~KazQuotedStringTokenizer() override;

    KazString nextString(bool skipRuns) override;

protected:
    char* quotes; ///< owned
    char escape;  ///< NUL for none
};
