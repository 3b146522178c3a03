// SPDX-License-Identifier: Apache-2.0
// Any sequence of calls gives a document that a strict reader of its format takes, with the
// texts in the order of the calls; and the same one where memory runs out in between.
#include "fuzz/document_readers.h"
#include "fuzz/harness.h"
#include "fuzz/writer_calls.h"

#include <memory>

namespace {

std::string textOf(doc_format_enum format, const std::string& document) {
    if (format == doc_rtf)
        return reference::RtfReader().read(document);
    if (format == doc_mif)
        return reference::MifReader().read(document);
    return format == doc_interleaf ? reference::InterleafReader().read(document)
                                   : reference::HtmlReader().read(document);
}

void wordsAreInOrder(const std::string& text, const std::vector<std::string>& words) {
    std::size_t at = 0;
    for (const std::string& word : words) {
        at = text.find(word, at);
        FUZZ_CHECK(at != std::string::npos);
        at += word.size();
    }
}

void write(doc_format_enum format, const fuzz::Input& input) {
    const std::unique_ptr<KazDocWriter> doc(KazDocWriter::create(format));
    fuzz::WriterCalls calls(*doc, "");
    calls.make(input);
    const std::string document = doc->finish().getValue();
    FUZZ_CHECK(document.size() == static_cast<std::size_t>(doc->finish().getLength()));
    wordsAreInOrder(textOf(format, document), calls.words);
    doc->paragraph("too late");
    doc->setTitle("too late");
    FUZZ_CHECK(doc->finish() == document.c_str());
    // Calls that ran out of memory have left no trace.
    fuzz::Input failing = input;
    fuzz::Failures failures(failing);
    const std::unique_ptr<KazDocWriter> interrupted(KazDocWriter::create(format));
    fuzz::WriterCalls(*interrupted, "").make(input, &failures);
    FUZZ_CHECK(failures.ask([&] { return interrupted->finish(); }) == document.c_str());
}

} // namespace

void fuzz::harness(Input& input) {
    for (const doc_format_enum format : {doc_html, doc_rtf, doc_mif, doc_interleaf})
        write(format, input);
}
