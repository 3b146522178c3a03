// SPDX-License-Identifier: Apache-2.0
/// @file
/// Formatting of moments.
#pragma once

#include "tools/formats/datetime.h"
#include "tools/formats/detail/conversion.h"
#include "tools/formats/detail/languages.h"
#include "tools/formats/detail/text_sink.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace kaz::dates {

/// A moment with all that a format may ask of it.
struct Moment {
    std::int64_t seconds = 0;
    date_parts parts;
    std::string zone; ///< the abbreviation; "" where there is none
};

/// Writes a moment by a format. Lives for one text.
class DateFormatter {
public:
    /// @p language null: the one in force, asked for when a name is needed.
    DateFormatter(const Moment& moment, const Language* language);

    /// Appends @p format with its conversions replaced.
    void write(const char* format, TextSink& sink) { write(format, {}, sink); }

private:
    struct Number {
        int value;
        int digits;   ///< 0: the letter is no number
        char padding; ///< where no flag says otherwise
    };

    void write(const char* format, const Conversion& around, TextSink& sink);
    const char* convert(const char* text, const Conversion& around, TextSink& sink);
    bool writePlain(char letter, TextSink& sink) const;
    bool convertRest(const Conversion& c, TextSink& sink);

    Number numberOf(char letter) const;
    Number weekNumberOf(char letter) const;
    const char* compositeOf(char letter);
    std::string_view nameOf(char letter);
    void writeName(const Conversion& c, std::string_view name, TextSink& sink);
    void writeComposite(const Conversion& c, const char* format, TextSink& sink);
    void writeZone(const Conversion& c, TextSink& sink);
    void writeOffset(const Conversion& c, TextSink& sink);
    void writeNanoseconds(const Conversion& c, TextSink& sink);

    const Language& language();
    int weekday() const;
    int dayOfYear() const;
    int hour12() const { return (moment_.parts.hour + 11) % 12 + 1; }

    const Moment& moment_;
    const date_parts& parts_;
    std::int64_t day_; ///< the local date's number
    const Language* language_;
};

} // namespace kaz::dates
