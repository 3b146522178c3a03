// SPDX-License-Identifier: Apache-2.0
// The report is written from the front to the end, and every target of a link has a name that its
// place alone decides, so that contents can point to what comes later. Names of files are other
// people's: they are shown as printable text, and encoded where they are part of a link.
#include "report.h"

#include "tools/moxtools.h"

#include <cstdlib>
#include <string>

namespace {

KazString counted(std::size_t count, const char* what) {
    KazString text;
    text.format("%zu %s%s", count, what, count == 1 ? "" : "s");
    return text;
}

/// "900 B", "17.0 kB", "12.3 MB".
KazString sizeText(std::uint64_t bytes) {
    constexpr const char* units[] = {"kB", "MB", "GB", "TB", "PB", "EB"};
    KazString text;
    // Whole bytes need no fraction.
    if (bytes < 1000) {
        text.format("%d B", static_cast<int>(bytes));
        return text;
    }
    double value = static_cast<double>(bytes) / 1000;
    int unit = 0;
    // What would be rounded to 1000.0 takes the next unit; 64 bits end within the last one.
    for (; value >= 999.95; ++unit)
        value /= 1000;
    text.format("%.1f %s", value, units[unit]);
    return text;
}

KazString sizeOf(const KazFileStatus& status) {
    if (status.kind == KazFileKind::Link)
        return "link";
    return status.kind == KazFileKind::File ? sizeText(status.size) : KazString("special file");
}

/// Who wants the same report again says when it was made.
std::int64_t presentMoment() {
    const char* text = std::getenv("SOURCE_DATE_EPOCH");
    return text != nullptr && text_is_integer(text) ? std::atoll(text) : date_now();
}

/// Each name of a path by itself, "/" before it.
KazString urlOf(const KazString& path, char separator) {
    KazString url;
    for (int begin = 0, end; begin <= path.getLength(); begin = end + 1) {
        end = path.find(separator, begin);
        if (end < 0)
            end = path.getLength();
        if (end > begin)
            url += KazString("/") + kazEncodeUrl(path.subString(begin, end - begin));
    }
    return url;
}

/// The URL of a native path that is absolute.
KazString fileUrl(const KazString& path) {
    // A share: the server's name stands where URLs have a host.
    if (path.find("\\\\") == 0)
        return "file:/" + urlOf(path, '\\');
    // The colon of a drive must not be encoded.
    if (path.find(":\\") == 1)
        return "file:///" + path.subStringBefore(2) + urlOf(path.subStringFrom(2), '\\');
    return "file://" + urlOf(path, '\\');
}

class Report {
public:
    Report(KazDocWriter& doc, const Inventory& inventory, const ReportOptions& options)
        : doc_(doc), inventory_(inventory), options_(options) {}

    void write(KazProgressHandle& progress, double share) {
        writeFront();
        if (!inventory_.systems.empty()) {
            writeContents();
            writeOverview();
        }
        for (std::size_t i = 0; i < inventory_.systems.size(); ++i) {
            writeSystem(inventory_.systems[i], anchorOf(i));
            progress.increment(share / static_cast<double>(inventory_.systems.size()), false);
        }
        if (!inventory_.files.empty()) {
            doc_.heading(2, "Files beside the systems", "files");
            writeFiles(inventory_.files, "");
        }
        writeFailures();
    }

private:
    static KazString anchorOf(std::size_t system) {
        KazString anchor;
        // By number: names of systems may hold what no format takes in a target.
        anchor.format("system%zu", system + 1);
        return anchor;
    }

    static KazString momentText(std::int64_t seconds) {
        return FmtDate(seconds) + " " + FmtTime(seconds);
    }

    void writeFront() {
        // Asked once, so that the paragraph and the document's date agree.
        const std::int64_t now = presentMoment();
        const KazString title = "Project " + projectName(options_);
        doc_.setTitle(title);
        doc_.setLanguage("en");
        doc_.setCreated(now);
        doc_.setPage(options_.pageWidth, options_.pageHeight, 200);
        doc_.heading(1, title);
        doc_.paragraph("As of " + momentText(now) + ": " +
                       counted(inventory_.systems.size(), "system") + " with " +
                       counted(inventory_.totals.files, "file") + ", " +
                       sizeText(inventory_.totals.bytes) + ".");
        if (options_.linksFiles)
            doc_.paragraph("In " + kazPrintable(kazHostPath(options_.project)) + ".");
        if (!options_.filter.isEmpty())
            doc_.paragraph("Only files whose names match " + kazPrintable(options_.filter) +
                           " are listed.");
    }

    void writeContents() {
        doc_.heading(2, "Contents");
        doc_.beginList(true);
        item("#overview", "Overview");
        for (std::size_t i = 0; i < inventory_.systems.size(); ++i)
            writeContentsOf(inventory_.systems[i], "#" + anchorOf(i));
        if (!inventory_.files.empty())
            item("#files", "Files beside the systems");
        if (!inventory_.failures.isEmpty())
            item("#failures", "What could not be read");
        doc_.endList();
    }

    void writeContentsOf(const System& system, const KazString& target) {
        item(target, "System " + kazPrintable(system.name));
        // Inside the item of the system, which stays open until the next one.
        doc_.beginList(false);
        if (!system.diagrams.empty())
            item(target + "_diagrams", "Diagrams");
        if (!system.folders.empty())
            item(target + "_files", "Files");
        doc_.endList();
    }

    void item(const char* target, const char* text) {
        doc_.item("");
        doc_.link(target, text);
    }

    void writeOverview() {
        constexpr int widths[] = {40, 12, 12, 14, 22};
        doc_.heading(2, "Overview", "overview");
        beginTable({"System", "Diagrams", "Files", "Size", "Last changed"}, widths);
        std::size_t diagrams = 0;
        for (std::size_t i = 0; i < inventory_.systems.size(); ++i) {
            const System& system = inventory_.systems[i];
            diagrams += system.diagrams.size();
            doc_.beginCell();
            doc_.link("#" + anchorOf(i), kazPrintable(system.name));
            doc_.cell(std::to_string(system.diagrams.size()).c_str());
            cells(system.totals);
        }
        KazTextStyle bold;
        bold.bold = true;
        doc_.cell("All", bold);
        doc_.cell(std::to_string(diagrams).c_str());
        cells(inventory_.totals);
        doc_.endTable();
    }

    template <std::size_t N>
    void beginTable(const char* const (&names)[N], const int (&widths)[N]) {
        doc_.beginTable(N, widths, 1);
        for (const char* name : names)
            doc_.cell(name);
    }

    void cells(const Totals& totals) {
        doc_.cell(std::to_string(totals.files).c_str());
        doc_.cell(sizeText(totals.bytes));
        doc_.cell(totals.files > 0 ? momentText(totals.modified) : KazString());
    }

    void writeSystem(const System& system, const KazString& anchor) {
        doc_.heading(2, "System " + kazPrintable(system.name), anchor);
        if (system.folders.empty())
            doc_.paragraph("No file of it is listed.");
        if (!system.diagrams.empty())
            writeDiagrams(system, anchor + "_diagrams");
        if (system.folders.empty())
            return;
        doc_.heading(3, "Files", anchor + "_files");
        for (const Folder& folder : system.folders) {
            if (!folder.path.isEmpty())
                doc_.heading(4, kazPrintable(folder.path));
            writeFiles(folder.files, "/" + system.name + "/" + folder.path);
        }
    }

    void writeDiagrams(const System& system, const KazString& anchor) {
        constexpr int widths[] = {30, 12, 12, 10, 14, 22};
        doc_.heading(3, "Diagrams", anchor);
        beginTable({"Diagram", "Revisions", "Newest", "Files", "Size", "Last changed"}, widths);
        for (const Diagram& diagram : system.diagrams) {
            doc_.cell(kazPrintable(diagram.name));
            doc_.cell(std::to_string(diagram.revisions).c_str());
            doc_.cell(kazPrintable(diagram.newest));
            cells(diagram.totals);
        }
        doc_.endTable();
    }

    /// @p folder is below the project, with "/" between the names.
    void writeFiles(const std::vector<ReportedFile>& files, const KazString& folder) {
        constexpr int widths[] = {60, 16, 24};
        const KazString url =
            options_.linksFiles ? fileUrl(options_.project) + urlOf(folder, '/') : KazString();
        beginTable({"File", "Size", "Last changed"}, widths);
        for (const ReportedFile& file : files) {
            doc_.beginCell();
            const KazString name = kazPrintable(file.name);
            if (options_.linksFiles)
                doc_.link(url + "/" + kazEncodeUrl(file.name), name);
            else
                doc_.text(name);
            doc_.cell(sizeOf(file.status));
            doc_.cell(momentText(file.status.modified));
        }
        doc_.endTable();
    }

    void writeFailures() {
        const Failures& failures = inventory_.failures;
        if (failures.isEmpty())
            return;
        doc_.heading(2, "What could not be read", "failures");
        doc_.beginList(false);
        for (const Failure& failure : failures.first())
            doc_.item(failure.path + ": " + failure.reason);
        // Only the first ones are kept; all are counted.
        if (const std::size_t more = failures.count() - failures.first().size(); more > 0)
            doc_.item("and " + counted(more, "more place"));
        doc_.endList();
    }

    KazDocWriter& doc_;
    const Inventory& inventory_;
    const ReportOptions& options_;
};

} // namespace

KazString projectName(const ReportOptions& options) {
    const KazString name = kazLastFileComponent(options.project);
    return kazPrintable(name.isEmpty() ? kazHostPath(options.project) : name);
}

void writeReport(KazDocWriter& doc, const Inventory& inventory, const ReportOptions& options,
                 KazProgressHandle& progress, double share) {
    Report(doc, inventory, options).write(progress, share);
}
