// SPDX-License-Identifier: Apache-2.0
/// @file
/// What a format makes of a character.
#pragma once

#include "tools/formats/detail/TextBuilder.h"
#include "tools/formats/detail/characters.h"
#include "tools/platform/processor/vector.h"

#include <array>
#include <string_view>

namespace kaz::detail {

/// What stands for the characters of one kind; null for themselves.
struct Spelling {
    std::string_view text;
    /// A statement of MIF: the string around it ends before and begins again behind.
    bool isStatement = false;
};

using Spellings = std::array<Spelling, kindCount>;

/// One column of the table of docs/encoders.md.
class Format {
public:
    /// @p others writes what has no spelling beyond ASCII; null for UTF-8.
    Format(const Spellings& table, void (*others)(TextBuilder&, char32_t));

    /// Appends the text. Nothing of it is in the string before the builder commits.
    void encode(TextBuilder& out, std::string_view text, text_encoding_enum encoding) const;

    /// Is @p text ASCII that stands for itself? False where a statement surrounds it.
    bool keeps(std::string_view text) const {
        return !hasStatements_ &&
               lengthOfKept(text.data(), text.data() + text.size()) == text.size();
    }

private:
    bool keeps(const Character& c, text_encoding_enum encoding) const {
        return spellings_[static_cast<std::size_t>(c.kind)].text.data() == nullptr &&
               (c.code < 0x80 || (others_ == nullptr && encoding == text_utf8));
    }
    std::size_t lengthOfKept(const char* text, const char* end) const;
    void put(TextBuilder& out, const Character& c, bool& inString) const;
    void putKept(TextBuilder& out, std::string_view text, bool& inString) const;
    void openString(TextBuilder& out, bool& inString) const;

    Spellings spellings_;
    void (*others_)(TextBuilder&, char32_t);
    host::ByteSet stopSet_; ///< the bytes that need a look
    std::array<bool, 256> stops_{};
    bool hasStatements_ = false;
};

/// The format of a paragraph's text; @p format is in range.
const Format& paragraphFormat(doc_format_enum format);
const Format& attributeFormat();
/// Without the quotes.
const Format& mifStringFormat();

} // namespace kaz::detail
