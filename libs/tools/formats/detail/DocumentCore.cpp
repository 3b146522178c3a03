// SPDX-License-Identifier: Apache-2.0
#include "tools/formats/detail/DocumentCore.h"

#include "tools/formats/detail/report_text.h"

#include <algorithm>

using kaz::detail::About;
using kaz::detail::boundedView;
using kaz::detail::DocumentFormat;
using kaz::detail::listLevels;
using kaz::detail::mostColumns;
using kaz::detail::Run;
using kaz::detail::Text;

namespace {

std::unique_ptr<DocumentFormat> makeFormat(doc_format_enum format, const KazColourTable& colours,
                                           const KazFontTable& fonts, const About& about) {
    switch (format) {
    case doc_rtf:
        return kaz::detail::makeRtfWriter(colours, fonts, about);
    case doc_mif:
        return kaz::detail::makeMifWriter(colours, fonts, about);
    case doc_interleaf:
        return kaz::detail::makeInterleafWriter(colours, fonts, about);
    default:
        return kaz::detail::makeHtmlWriter(colours, fonts, about);
    }
}

} // namespace

KazDocWriter::Core::Core(doc_format_enum format)
    : format(format), out(makeFormat(format, colours, fonts, about)) {}

/// A bad number is none rather than an error: reports are written by programs, far from anybody
/// who could correct it.
Run KazDocWriter::Core::runOf(const KazTextStyle& style) const {
    Run run;
    run.bold = style.bold;
    run.italic = style.italic;
    run.underline = style.underline;
    run.size = style.size == 0 ? 0 : std::clamp(style.size, 1, 500);
    run.font = style.font >= 0 && style.font < fonts.getCount() ? style.font : -1;
    run.colour = style.colour > 0 && style.colour < colours.getCount() ? style.colour : 0;
    return run;
}

void KazDocWriter::Core::endBlocks() {
    endParagraph();
    endTable();
    state.tooDeep = 0;
    while (state.depth > 0)
        endList();
}

void KazDocWriter::Core::beginParagraph(Align align) {
    endBlocks();
    out->beginParagraph(align < Left || align > Justify ? Left : align);
    state.block = State::inParagraph;
}

void KazDocWriter::Core::endParagraph() {
    if (state.block != State::inParagraph)
        return;
    out->endParagraph();
    state.block = State::none;
}

/// Written with its first item.
void KazDocWriter::Core::beginList(bool numbered) {
    endParagraph();
    endTable();
    // Counted, so that as many endList() calls end nothing.
    if (state.depth == listLevels) {
        ++state.tooDeep;
        return;
    }
    if (state.depth > 0) {
        // A list stands in an item, so the outer one gets an empty item first.
        if (state.lists[state.depth - 1].items == 0)
            beginItem();
        if (state.inItemText)
            out->endItemText();
        state.inItemText = false;
    }
    state.lists[state.depth++] = {numbered, 0};
    state.block = State::inList;
}

void KazDocWriter::Core::beginItem() {
    endItem();
    State::List& list = state.lists[state.depth - 1];
    if (list.items == 0)
        out->beginList(list.numbered, state.depth);
    out->beginItem(list.numbered, state.depth, ++list.items);
    state.inItemText = true;
}

void KazDocWriter::Core::endItem() {
    if (state.lists[state.depth - 1].items == 0)
        return;
    if (state.inItemText)
        out->endItemText();
    state.inItemText = false;
    out->endItem();
}

void KazDocWriter::Core::endList() {
    if (state.tooDeep > 0) {
        --state.tooDeep;
        return;
    }
    if (state.depth == 0)
        return;
    endItem();
    const State::List& list = state.lists[--state.depth];
    if (list.items > 0)
        out->endList(list.numbered, state.depth + 1);
    if (state.depth == 0)
        state.block = State::none;
}

/// Written with its first cell: a table without any would be invalid in some formats. Nothing
/// fails behind endBlocks(), so `shape`, which change() does not restore, is that of `state`.
void KazDocWriter::Core::beginTable(int columns, const int* percents, int headerRows) {
    endBlocks();
    shape.columns = std::clamp(columns, 1, mostColumns);
    shape.headerRows = std::max(headerRows, 0);
    for (int i = 0; i < shape.columns; ++i)
        shape.shares[static_cast<std::size_t>(i)] =
            percents != nullptr ? std::max(percents[i], 1) : 1;
    state.block = State::inTable;
    state.rows = state.column = 0;
    state.columns = shape.columns;
}

void KazDocWriter::Core::beginCell() {
    // A row that is full ends by itself: endRow() is for those that are not.
    if (state.inRow && state.column == state.columns)
        endRow();
    if (!state.inRow) {
        if (state.rows == 0)
            out->beginTable(shape);
        out->beginRow(state.rows++);
        state.inRow = true;
        state.column = 0;
    }
    endCell();
    out->beginCell();
    state.inCell = true;
    ++state.column;
}

void KazDocWriter::Core::endCell() {
    if (state.inCell)
        out->endCell();
    state.inCell = false;
}

/// A row gets empty cells for those that lack, as every format needs all of them.
void KazDocWriter::Core::endRow() {
    if (!state.inRow)
        return;
    while (state.column < state.columns)
        beginCell();
    endCell();
    out->endRow();
    state.inRow = false;
}

void KazDocWriter::Core::endTable() {
    if (state.block != State::inTable)
        return;
    endRow();
    if (state.rows > 0)
        out->endTable();
    state.block = State::none;
}

void KazDocWriter::Core::needText() {
    if (state.block == State::none) {
        beginParagraph(Left);
    } else if (state.block == State::inTable && !state.inCell) {
        beginCell();
    } else if (state.block == State::inList && !state.inItemText) {
        if (state.lists[state.depth - 1].items == 0)
            return beginItem();
        out->continueItem(state.depth);
        state.inItemText = true;
    }
}

/// A link that is not safe, or that the format cannot spell, is shown as its text.
void KazDocWriter::Core::link(const char* target, const char* text) {
    const Text shown = textOf(text == nullptr || *text == '\0' ? target : text);
    const std::string url = kaz::detail::inUtf8(boundedView(target), encoding);
    const bool isAnchor = url.starts_with('#');
    if (!kazIsSafeLink(url.c_str()) || url == "#" || format == doc_interleaf)
        return out->text(shown, Run());
    out->link({isAnchor ? kazAnchorName(url.c_str() + 1).getValue() : url, isAnchor}, shown);
}
