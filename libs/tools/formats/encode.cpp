// SPDX-License-Identifier: Apache-2.0
// The functions are the public side of the formats' spellings: they check the arguments, and make
// sure that a text which is a part of the result stays readable while the result grows.
#include "tools/formats/encode.h"

#include "tools/formats/detail/bounded_view.h"
#include "tools/formats/detail/spelling.h"

#include <cstring>
#include <functional>

namespace {

using kaz::detail::boundedView;
using kaz::detail::Format;
using kaz::detail::TextBuilder;

/// Gives back room that was expected to be needed.
/// At most a quarter and 64 bytes stay unused: texts are often kept for long, and growth by half
/// leaves more.
void trim(KazString& text) {
    if (text.isEmpty())
        return;
    const KazStringRep* const rep = KazStringRep::of(text.disguise());
    if (rep->bufferLength - rep->stringLength > rep->stringLength / 4 + 64)
        text.minimizeSize();
}

/// Most names need no change: one scan and one block of the right size are then all.
KazString encoded(const Format& format, const char* text, text_encoding_enum encoding) {
    const std::string_view view = boundedView(text);
    if (format.keeps(view))
        return view.data(); // as terminated as text
    KazString result;
    TextBuilder out(result);
    format.encode(out, view, encoding);
    out.commit();
    trim(result);
    return result;
}

bool isInRange(doc_format_enum format) {
    return format >= doc_html && format <= doc_interleaf;
}

/// Whether @p text begins in the characters of @p string.
bool holds(const KazString& string, const char* text) {
    const char* const first = string.getValue();
    const std::less_equal<> isNotBehind;
    return isNotBehind(first, text) && isNotBehind(text, first + string.getLength());
}

} // namespace

KazString kazEncodeText(doc_format_enum format, const char* text, text_encoding_enum encoding) {
    if (!isInRange(format))
        return {};
    return encoded(kaz::detail::paragraphFormat(format), text, encoding);
}

void kazAppendEncoded(KazString& out, doc_format_enum format, const char* text, int length,
                      text_encoding_enum encoding) {
    if (!isInRange(format) || text == nullptr)
        return;
    // With a second holder the builder takes a block of its own, and this one stays.
    const KazString kept = holds(out, text) ? out : KazString();
    TextBuilder builder(out);
    kaz::detail::paragraphFormat(format).encode(
        builder,
        length < 0 ? boundedView(text) : std::string_view(text, static_cast<std::size_t>(length)),
        encoding);
    builder.commit();
}

KazString kazEncodeHtmlAttribute(const char* text, text_encoding_enum encoding) {
    return encoded(kaz::detail::attributeFormat(), text, encoding);
}

KazString kazEncodeMifString(const char* text, text_encoding_enum encoding) {
    KazString result;
    TextBuilder out(result);
    out.append('`');
    kaz::detail::mifStringFormat().encode(out, boundedView(text), encoding);
    out.append('\'');
    out.commit();
    trim(result);
    return result;
}
