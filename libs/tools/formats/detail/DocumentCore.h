// SPDX-License-Identifier: Apache-2.0
/// @file
/// The one state machine behind all formats of reports.
#pragma once

#include "tools/formats/KazDocWriter.h"
#include "tools/formats/detail/DocumentFormat.h"
#include "tools/formats/detail/bounded_view.h"

#include <memory>
#include <set>
#include <string>

/// Knows alone what is open: a paragraph, or a table, or lists in one another, the innermost on
/// top. A call ends what cannot go on, begins what is missing, and tells the format, which only
/// spells.
struct KAZ_LOCAL KazDocWriter::Core {
    /// What is open.
    struct State {
        enum Block { none, inParagraph, inTable, inList };
        struct List {
            bool numbered;
            int items; ///< so far; the last one is open
        };

        Block block = none;
        int depth = 0;           ///< of lists
        int tooDeep = 0;         ///< lists that were not begun beyond the last level
        bool inItemText = false; ///< text can go on in the innermost item
        List lists[kaz::detail::listLevels] = {};
        int rows = 0;    ///< begun so far
        int columns = 0; ///< of the table
        int column = 0;  ///< cells begun in the row
        bool inRow = false, inCell = false;
    };

    explicit Core(doc_format_enum format);

    kaz::detail::Text textOf(const char* text) const {
        return {kaz::detail::boundedView(text), encoding};
    }
    /// With what is out of range left out.
    kaz::detail::Run runOf(const KazTextStyle& style) const;

    /// Does @p call, or nothing of it when it throws; nothing at all once all is finished.
    template <class Call>
    void change(Call call) {
        if (isFinished)
            return;
        // Both are small: a call that does not fail pays little for being able to.
        const State before = state;
        const kaz::detail::DocumentFormat::Progress mark = out->mark();
        try {
            call();
        } catch (...) {
            state = before;
            out->goBack(mark);
            throw;
        }
    }

    void endBlocks();
    void beginParagraph(Align align);
    void endParagraph();
    void beginList(bool numbered);
    void beginItem();
    void endItem();
    void endList();
    void beginTable(int columns, const int* percents, int headerRows);
    void beginCell();
    void endCell();
    void endRow();
    void endTable();
    /// Begins what text needs around it.
    void needText();
    void link(const char* target, const char* text);

    const doc_format_enum format;
    KazColourTable colours;
    KazFontTable fonts;
    kaz::detail::About about;
    text_encoding_enum encoding = text_utf8;
    State state;
    kaz::detail::TableShape shape;
    std::set<std::string> anchors;
    std::unique_ptr<kaz::detail::DocumentFormat> out;
    KazString result;
    bool isFinished = false;
};
