// SPDX-License-Identifier: Apache-2.0
/// @file
/// Cuts a wide string into tokens, with quotes and escapes.
#pragma once

#include "tools/strings/KazWStringTokenizer.h"

/// KazQuotedStringTokenizer over 16-bit text: the same rules for quotes and
/// escapes.
class KAZ_API KazWQuotedStringTokenizer : public KazWStringTokenizer {
public:
    /// Null sets count as "".
    KazWQuotedStringTokenizer(const KazWString& text, const unsigned short* delimiters,
                              const unsigned short* quotes, unsigned short escape);
    /// Goes on by itself from where @p o stands.
    KazWQuotedStringTokenizer(const KazWQuotedStringTokenizer& o);
    KazWQuotedStringTokenizer& operator=(const KazWQuotedStringTokenizer& o);
    ~KazWQuotedStringTokenizer() override;

    KazWString nextString(bool skipRuns) override;

protected:
    unsigned short* quotes; ///< owned
    unsigned short escape;  ///< NUL for none
};
