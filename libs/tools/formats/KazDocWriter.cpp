// SPDX-License-Identifier: Apache-2.0
// The calls of a report. Each is undone as a whole when it fails, so that the document stays
// well-formed; what they do to what is open is in DocumentCore.
#include "tools/formats/KazDocWriter.h"

#include "tools/app/failures/KazFileException.h"
#include "tools/formats/datetime.h"
#include "tools/formats/detail/DocumentCore.h"
#include "tools/formats/detail/picture_file.h"
#include "tools/formats/detail/report_text.h"
#include "tools/platform/host.h"
#include "tools/util/detail/or_empty.h"

#include <algorithm>
#include <cerrno>

using kaz::detail::boundedView;
using kaz::detail::cleaned;
using kaz::detail::codeLines;
using kaz::detail::isLanguage;
using kaz::detail::Picture;
using kaz::detail::Run;
using kaz::detail::Text;

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
    core->about.title = cleaned(boundedView(title), core->encoding);
}

void KazDocWriter::setAuthor(const char* author) {
    core->about.author = cleaned(boundedView(author), core->encoding);
}

void KazDocWriter::setLanguage(const char* tag) {
    if (isLanguage(boundedView(tag)))
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
        core->out->code(codeLines(boundedView(text), core->encoding));
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
        if (core->state.block == Core::State::inTable)
            core->beginCell();
    });
}

void KazDocWriter::cell(const char* text, const KazTextStyle& style) {
    core->change([&] {
        if (core->state.block == Core::State::inTable)
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
