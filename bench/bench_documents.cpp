// SPDX-License-Identifier: Apache-2.0
// Texts for documents, and whole reports, beside what a tool would otherwise use.

#include "tools/formats/KazDocWriter.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#ifdef MOX_PEER_ABSEIL
#include <absl/strings/str_replace.h>
#endif
#ifdef MOX_PEER_GLIB
#include <glib.h>
#endif
#ifdef MOX_PEER_QT
#include <QString>
#endif

namespace {

/// Words, of which @p percent of the characters are markup.
std::string textOf(std::size_t size, std::size_t percent) {
    std::string text;
    for (std::size_t i = 0; i < size; ++i)
        text += percent > 0 && i % (100 / percent) == 7 ? "<>&\"'"[i / 50 % 5] : "the tank "[i % 9];
    return text;
}

using Encode = void (*)(const std::string&);

template <doc_format_enum format>
void ours(const std::string& text) {
    benchmark::DoNotOptimize(kazEncodeText(format, text.c_str()));
}

void row(const std::string& name, Encode encode, std::size_t size, std::size_t percent) {
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
        const std::string text = textOf(size, percent);
        for (auto _ : state)
            encode(text);
    });
}

void htmlRows(const std::string& impl, Encode encode) {
    row("HTML 64 KiB as it is/" + impl, encode, 65536, 0);
    row("HTML 64 KiB, 2 % markup/" + impl, encode, 65536, 2);
    row("HTML 32 bytes/" + impl, encode, 32, 0);
}

#ifdef MOX_PEER_ABSEIL
void abseil(const std::string& text) {
    benchmark::DoNotOptimize(absl::StrReplaceAll(
        text, {{"&", "&amp;"}, {"<", "&lt;"}, {">", "&gt;"}, {"\"", "&quot;"}, {"'", "&#39;"}}));
}
#endif

#ifdef MOX_PEER_GLIB
void glib(const std::string& text) {
    gchar* escaped = g_markup_escape_text(text.data(), static_cast<gssize>(text.size()));
    benchmark::DoNotOptimize(escaped);
    g_free(escaped);
}
#endif

#ifdef MOX_PEER_QT
void qt(const std::string& text) {
    benchmark::DoNotOptimize(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()))
                                 .toHtmlEscaped()
                                 .toUtf8());
}
#endif

constexpr int reportCells = 200000;

std::string cellText(int number) {
    return "cell <" + std::to_string(number) + ">";
}

void report(benchmark::State& state, doc_format_enum format) {
    std::vector<std::string> texts;
    for (int i = 0; i < 1000; ++i)
        texts.push_back(cellText(i));
    for (auto _ : state) {
        const std::unique_ptr<KazDocWriter> doc(KazDocWriter::create(format));
        doc->beginTable(8);
        for (std::size_t i = 0; i < reportCells; ++i)
            doc->cell(texts[i % texts.size()].c_str());
        benchmark::DoNotOptimize(doc->finish().getLength());
    }
}

/// The texts alone, encoded one by one.
void reportTexts(benchmark::State& state, doc_format_enum format) {
    std::vector<std::string> texts;
    for (int i = 0; i < 1000; ++i)
        texts.push_back(cellText(i));
    for (auto _ : state)
        for (std::size_t i = 0; i < reportCells; ++i)
            benchmark::DoNotOptimize(kazEncodeText(format, texts[i % texts.size()].c_str()));
}

void reportRows() {
    const std::pair<const char*, doc_format_enum> formats[] = {
        {"HTML", doc_html}, {"RTF", doc_rtf}, {"MIF", doc_mif}, {"Interleaf", doc_interleaf}};
    for (const auto& [name, format] : formats) {
        const std::string work = std::string("report of 200,000 cells, ") + name;
        benchmark::RegisterBenchmark((work + "/moxtools").c_str(), report, format)
            ->Unit(benchmark::kMillisecond);
        benchmark::RegisterBenchmark((work + "/texts alone").c_str(), reportTexts, format)
            ->Unit(benchmark::kMillisecond);
    }
}

} // namespace

int main(int argc, char** argv) {
    htmlRows("moxtools", ours<doc_html>);
#ifdef MOX_PEER_ABSEIL
    htmlRows("abseil", abseil);
#endif
#ifdef MOX_PEER_GLIB
    htmlRows("glib", glib);
#endif
#ifdef MOX_PEER_QT
    htmlRows("qt", qt);
#endif
    const std::pair<const char*, Encode> others[] = {
        {"RTF", ours<doc_rtf>}, {"MIF", ours<doc_mif>}, {"Interleaf", ours<doc_interleaf>}};
    for (const auto& [name, encode] : others) {
        row(std::string(name) + " 64 KiB as it is/moxtools", encode, 65536, 0);
        row(std::string(name) + " 64 KiB as it is/our HTML", ours<doc_html>, 65536, 0);
    }
    reportRows();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
