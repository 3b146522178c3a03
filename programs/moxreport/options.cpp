// SPDX-License-Identifier: Apache-2.0
// Words are found good or bad by the parser; what remains here are measures and the format, which
// follows from the name of the output unless it was named.
#include "options.h"

#include "common/trace_options.h"
#include "tools/moxtools.h"

#include <cstdlib>
#include <cstring>
#include <utility>

namespace {

constexpr KazCommandLine::Option options[] = {
    {arg_projdir, "DIR", "project directory", true, KazCommandLine::AnyDirectory},
    {arg_system, "NAME", "report this system only"},
    {arg_filter, "PATTERN", "list the files whose names match only"},
    {arg_output, "FILE", "write to this file, else to standard output", false,
     KazCommandLine::AnyFile},
    {arg_formats, "FORMAT", "html, rtf, mif or interleaf, else by the suffix of FILE, else html",
     false, KazCommandLine::OneOf, "html|rtf|mif|interleaf"},
    {arg_orientation, "SIDE", "portrait or landscape, else as the page is", false,
     KazCommandLine::OneOf, "portrait|landscape"},
    {arg_pagewidth, "MM", "width of the page, else 210", false, KazCommandLine::WholeNumber},
    {arg_pageheight, "MM", "height of the page, else 297", false, KazCommandLine::WholeNumber},
    {arg_path, nullptr, "make each file's name a link to its place on this machine"},
    {arg_verbose, nullptr, "with -output: tell each system that was read"},
    {arg_Quiet, nullptr, "show errors only"},
    traceTopics,
    traceFile};
constexpr KazCommandLine commandLine(
    {"moxreport", MOXREPORT_VERSION,
     "Reports what a project holds: its systems, their diagrams, and all files with size and date.",
     options, static_cast<int>(std::size(options)), "", 0, 0});

/// In the order of doc_format_enum.
constexpr const char* formatNames[] = {"html", "rtf", "mif", "interleaf"};

const char* textOf(arg_type_enum type) {
    return kaz_arg_text(type, 0, nullptr);
}

bool isSwitchedOn(arg_type_enum type) {
    return TI_yesorno(textOf(type), false);
}

bool endsIn(const KazString& text, const char* end) {
    const int length = static_cast<int>(std::strlen(end));
    // A name that is nothing but the suffix is no suffix.
    if (text.getLength() <= length)
        return false;
    KazString tail = text.subStringFrom(text.getLength() - length);
    tail.toLower();
    return tail == end;
}

doc_format_enum formatBySuffix(const KazString& file) {
    constexpr std::pair<const char*, doc_format_enum> suffixes[] = {
        {".rtf", doc_rtf}, {".mif", doc_mif}, {".iaf", doc_interleaf}};
    for (const auto& [suffix, format] : suffixes)
        if (endsIn(file, suffix))
            return format;
    return doc_html;
}

doc_format_enum formatOf(const char* name, const KazString& file) {
    for (int i = 0; name != nullptr && i < static_cast<int>(std::size(formatNames)); ++i)
        if (std::strcmp(name, formatNames[i]) == 0)
            return static_cast<doc_format_enum>(i);
    return formatBySuffix(file);
}

/// False, and said, for a length that leaves no room for text, or that no sheet has.
bool readLength(arg_type_enum type, int& tenths) {
    const char* text = textOf(type);
    if (text == nullptr)
        return true;
    // The parser has found a whole number of 64 bits; what is too long for it is out of range here.
    const long millimetres = std::strtol(text, nullptr, 10);
    if (millimetres >= 60 && millimetres <= 2000) {
        tenths = static_cast<int>(millimetres) * 10;
        return true;
    }
    commandLine.complain("a page has 60 to 2000 millimetres, not %s",
                         kazPrintable(text).getValue());
    return false;
}

bool readPage(ReportOptions& report) {
    if (!readLength(arg_pagewidth, report.pageWidth) ||
        !readLength(arg_pageheight, report.pageHeight))
        return false;
    // The sides are exchanged only where the page does not lie that way already.
    if (const char* side = textOf(arg_orientation);
        side != nullptr && (*side == 'l') != (report.pageWidth > report.pageHeight))
        std::swap(report.pageWidth, report.pageHeight);
    return true;
}

} // namespace

int readOptions(int argc, char** argv, ReportOptions& report) {
    if (const int status = commandLine.parse(argc, argv); status != KazCommandLine::run)
        return status;
    const KazString project = textOf(arg_projdir);
    if (project.isEmpty()) {
        commandLine.complain("the project directory is empty");
        return KazCommandLine::wrongUsage;
    }
    // Absolute, as links and the title need it, and without the separator that would hide its name.
    report.project = kazDirForDisplay(kazFullPath(project));
    report.system = textOf(arg_system);
    report.filter = textOf(arg_filter);
    if (const char* file = textOf(arg_output))
        report.output = _TI_hm(file);
    report.format = formatOf(textOf(arg_formats), report.output);
    report.linksFiles = isSwitchedOn(arg_path);
    report.verbose = isSwitchedOn(arg_verbose);
    report.quiet = isSwitchedOn(arg_Quiet);
    return readPage(report) ? KazCommandLine::run : KazCommandLine::wrongUsage;
}
