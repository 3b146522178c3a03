// SPDX-License-Identifier: Apache-2.0
// The one state machine behind all formats. What is open is known here alone: a paragraph,
// or a table, or lists in one another, the innermost on top. A call ends what cannot go on,
// begins what is missing, and tells the format, which only spells. A call that fails is
// undone as a whole, so that the document stays well-formed.
#include "tools/formats/KazDocWriter.h"

#include "tools/app/exceptions/KazMemoryException.h"
#include "tools/app/failures/KazFileException.h"
#include "tools/formats/datetime.h"
#include "tools/formats/detail/DocumentFormat.h"
#include "tools/formats/detail/characters.h"
#include "tools/formats/detail/picture_file.h"
#include "tools/platform/host.h"
#include "tools/util/detail/or_empty.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <set>
#include <string>
#include <vector>

namespace {

using kaz::detail::About;
using kaz::detail::DocumentFormat;
using kaz::detail::listLevels;
using kaz::detail::mostColumns;
using kaz::detail::Picture;
using kaz::detail::Run;
using kaz::detail::TableShape;
using kaz::detail::Text;

std::string_view viewOf(const char* text) {
    const std::string_view view = kaz::detail::orEmpty(text);
    if (view.size() > INT_MAX)
        throw KazMemoryException();
    return view;
}

bool isControl(const kaz::detail::Utf8& c) {
    return c.valid && (c.code < 0x20 || (c.code >= 0x7F && c.code <= 0x9F));
}

/// Valid UTF-8 without control characters, for what stands in one line.
/// A replacement would be shown for a control character, hence a blank in its place. The first two
/// tests see what the third cannot: the kind of a control is the same as that of a damaged byte.
std::string cleaned(std::string_view text, text_encoding_enum encoding) {
    std::string result;
    for (const char* at = text.data(); at != text.data() + text.size();) {
        const char* const end = text.data() + text.size();
        const auto c = kaz::detail::nextCharacter(at, end, encoding);
        const bool isBlank =
            static_cast<unsigned char>(*at) < 0x20 || *at == 0x7F ||
            (encoding == text_utf8 && isControl(kaz::detail::firstOfUtf8(at, end))) ||
            c.kind == kaz::detail::Kind::lineBreak;
        char utf8[4];
        if (isBlank)
            result += ' ';
        else
            result.append(utf8, kaz::detail::putUtf8(utf8, c.code));
        at += c.length;
    }
    return result;
}

/// As it stands, in UTF-8 if it was valid.
/// A link's bytes are part of its meaning, so nothing is replaced in them.
std::string inUtf8(std::string_view text, text_encoding_enum encoding) {
    std::string result(text);
    if (encoding != text_latin1)
        return result;
    result.clear();
    for (const char& c : text) {
        char utf8[4];
        const auto character = kaz::detail::nextCharacter(&c, &c + 1, encoding);
        // A control character stays one, so that the link is refused for it.
        const bool isAscii = static_cast<unsigned char>(c) < 0x80;
        result.append(utf8, isAscii ? std::copy_n(&c, 1, utf8)
                                    : kaz::detail::putUtf8(utf8, character.code));
    }
    return result;
}

/// Lines as they stand, with blanks up to the next 8 columns for each tab.
std::vector<std::string> codeLines(std::string_view text, text_encoding_enum encoding) {
    std::vector<std::string> lines(1);
    std::size_t column = 0;
    for (const char* at = text.data(); at != text.data() + text.size();) {
        const auto c = kaz::detail::nextCharacter(at, text.data() + text.size(), encoding);
        at += c.length;
        if (c.kind == kaz::detail::Kind::lineBreak) {
            lines.emplace_back();
            column = 0;
            continue;
        }
        const std::size_t width = c.kind == kaz::detail::Kind::tab ? 8 - column % 8 : 1;
        column += width;
        char utf8[4];
        if (c.kind == kaz::detail::Kind::tab)
            lines.back().append(width, ' ');
        else
            lines.back().append(utf8, kaz::detail::putUtf8(utf8, c.code));
    }
    if (lines.size() > 1 && lines.back().empty())
        lines.pop_back(); // a line end ends a line
    return lines;
}

/// As much of RFC 5646 as keeps a tag from ending the attribute that it is written in; 35 is the
/// length that the RFC recommends to have room for.
bool isLanguage(std::string_view tag) {
    return !tag.empty() && tag.size() <= 35 && std::all_of(tag.begin(), tag.end(), [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
               c == '-';
    });
}

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
    List lists[listLevels] = {};
    int rows = 0;    ///< begun so far
    int columns = 0; ///< of the table
    int column = 0;  ///< cells begun in the row
    bool inRow = false, inCell = false;
};

} // namespace

struct KazDocWriter::Core {
    explicit Core(doc_format_enum format)
        : format(format), out(makeFormat(format, colours, fonts, about)) {}

    Text textOf(const char* text) const { return {viewOf(text), encoding}; }
    Run runOf(const KazTextStyle& style) const;

    /// Does @p call, or nothing of it when it throws; nothing at all once all is finished.
    template <class Call>
    void change(Call call) {
        if (isFinished)
            return;
        // Both are small: a call that does not fail pays little for being able to.
        const State before = state;
        const DocumentFormat::Progress mark = out->mark();
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
    About about;
    text_encoding_enum encoding = text_utf8;
    State state;
    TableShape shape;
    std::set<std::string> anchors;
    std::unique_ptr<DocumentFormat> out;
    KazString result;
    bool isFinished = false;
};

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
    const std::string url = inUtf8(viewOf(target), encoding);
    const bool isAnchor = url.starts_with('#');
    if (!kazIsSafeLink(url.c_str()) || url == "#" || format == doc_interleaf)
        return out->text(shown, Run());
    out->link({isAnchor ? kazAnchorName(url.c_str() + 1).getValue() : url, isAnchor}, shown);
}

KazDocWriter* KazDocWriter::create(doc_format_enum format) {
    if (format < doc_html || format > doc_interleaf)
        return nullptr;
    return new KazDocWriter(std::make_unique<Core>(format));
}

KazDocWriter::KazDocWriter(std::unique_ptr<Core> core) : core(std::move(core)) {}

KazDocWriter::~KazDocWriter() = default;

doc_format_enum KazDocWriter::getFormat() const {
    return core->format;
}

const char* KazDocWriter::getSuffix() const {
    constexpr const char* suffixes[] = {".html", ".rtf", ".mif", ".iaf"};
    return suffixes[core->format];
}

KazColourTable& KazDocWriter::colours() {
    return core->colours;
}

KazFontTable& KazDocWriter::fonts() {
    return core->fonts;
}

void KazDocWriter::setEncoding(text_encoding_enum encoding) {
    core->encoding = encoding == text_latin1 ? text_latin1 : text_utf8;
}

void KazDocWriter::setTitle(const char* title) {
    core->about.title = cleaned(viewOf(title), core->encoding);
}

void KazDocWriter::setAuthor(const char* author) {
    core->about.author = cleaned(viewOf(author), core->encoding);
}

void KazDocWriter::setLanguage(const char* tag) {
    if (isLanguage(viewOf(tag)))
        core->about.language = tag;
}

void KazDocWriter::setCreated(std::int64_t seconds) {
    if (seconds < date_min || seconds > date_max)
        return;
    core->about.hasDate = true;
    core->about.created = seconds;
}

/// All three at once or none: a margin alone might leave no room for text.
void KazDocWriter::setPage(int width, int height, int margin) {
    constexpr int least = 100;
    const bool isReasonable = margin >= 0 && margin <= kaz::detail::longestMeasure &&
                              width <= kaz::detail::longestMeasure &&
                              height <= kaz::detail::longestMeasure &&
                              std::min(width, height) - 2 * margin >= least;
    if (!isReasonable || core->isFinished)
        return;
    core->about.width = width;
    core->about.height = height;
    core->about.margin = margin;
}

void KazDocWriter::heading(int level, const char* text, const char* anchor) {
    core->change([&] {
        core->endBlocks();
        std::string name;
        if (anchor != nullptr && *anchor != '\0')
            name = kazAnchorName(anchor).getValue();
        // An anchor that exists stays where it is; a second one would make links ambiguous.
        if (core->anchors.count(name) != 0)
            name.clear();
        core->out->heading(std::clamp(level, 1, kaz::detail::headingLevels), core->textOf(text),
                           name);
        // Last, as the set is not restored when the call fails.
        if (!name.empty())
            core->anchors.insert(name);
    });
}

void KazDocWriter::beginParagraph(Align align) {
    core->change([&] { core->beginParagraph(align); });
}

void KazDocWriter::endParagraph() {
    core->change([&] { core->endParagraph(); });
}

void KazDocWriter::paragraph(const char* text, Align align) {
    core->change([&] {
        core->beginParagraph(align);
        core->out->text(core->textOf(text), Run());
        core->endParagraph();
    });
}

void KazDocWriter::preformatted(const char* text) {
    core->change([&] {
        core->endBlocks();
        core->out->code(codeLines(viewOf(text), core->encoding));
    });
}

void KazDocWriter::rule() {
    core->change([&] {
        core->endBlocks();
        core->out->rule();
    });
}

void KazDocWriter::pageBreak() {
    core->change([&] {
        core->endBlocks();
        core->out->pageBreak();
    });
}

void KazDocWriter::beginList(bool numbered) {
    core->change([&] { core->beginList(numbered); });
}

void KazDocWriter::item(const char* text) {
    core->change([&] {
        core->endParagraph();
        core->endTable();
        if (core->state.depth == 0)
            core->beginList(false);
        core->beginItem();
        core->out->text(core->textOf(text), Run());
    });
}

void KazDocWriter::endList() {
    core->change([&] { core->endList(); });
}

void KazDocWriter::beginTable(int columns, const int* percents, int headerRows) {
    core->change([&] { core->beginTable(columns, percents, headerRows); });
}

void KazDocWriter::beginCell() {
    core->change([&] {
        if (core->state.block == State::inTable)
            core->beginCell();
    });
}

void KazDocWriter::cell(const char* text, const KazTextStyle& style) {
    core->change([&] {
        if (core->state.block == State::inTable)
            core->beginCell();
        core->needText();
        core->out->text(core->textOf(text), core->runOf(style));
    });
}

void KazDocWriter::endRow() {
    core->change([&] { core->endRow(); });
}

void KazDocWriter::endTable() {
    core->change([&] { core->endTable(); });
}

void KazDocWriter::text(const char* text, const KazTextStyle& style) {
    core->change([&] {
        core->needText();
        core->out->text(core->textOf(text), core->runOf(style));
    });
}

void KazDocWriter::lineBreak() {
    core->change([&] {
        core->needText();
        core->out->lineBreak();
    });
}

void KazDocWriter::link(const char* target, const char* text) {
    core->change([&] {
        core->needText();
        core->link(target, text);
    });
}

void KazDocWriter::anchor(const char* name) {
    core->change([&] {
        core->needText();
        if (name == nullptr || *name == '\0')
            return;
        const std::string clean = kazAnchorName(name).getValue();
        if (core->anchors.count(clean) != 0)
            return;
        core->out->anchor(clean);
        core->anchors.insert(clean);
    });
}

/// The file is read before the document changes, so a failure to read it changes nothing.
bool KazDocWriter::image(const char* path, int width, int height, const char* alternative) {
    Picture picture{};
    const bool isThere = kaz::detail::readPicture(kaz::detail::orEmpty(path), picture);
    core->change([&] {
        core->needText();
        const Text shown = core->textOf(alternative);
        if (isThere) {
            kaz::detail::scalePicture(picture, width, height);
            return core->out->image(picture, shown);
        }
        core->out->text({"[", text_utf8}, Run());
        core->out->text(shown, Run());
        core->out->text({"]", text_utf8}, Run());
    });
    return isThere;
}

const KazString& KazDocWriter::finish() {
    core->change([&] {
        core->endBlocks();
        core->result = core->out->document();
        core->isFinished = true;
    });
    // The parts are as large as the document and no longer needed. A second finish() gives the
    // same text.
    core->out.reset();
    return core->result;
}

void KazDocWriter::write(const char* path) {
    const KazString& document = finish();
    if (kaz::host::writeFile(kaz::detail::orEmpty(path), document.getValue(),
                             static_cast<std::size_t>(document.getLength())) != 0)
        KazFileException::throwErrno(errno, path);
}
