// SPDX-License-Identifier: Apache-2.0
// A file that is damaged is still shown, with what is wrong with it; only one that cannot be
// understood ends the work. Updating measures all parts before anything is written, so that a
// part that is missing leaves the file as it was.
#include "moxinfo/product.h"

#include "common/complaint.h"
#include "common/printable.h"
#include "tools/files/kazpath.h"
#include "tools/files/tifiles.h"
#include "tools/messages/messages.h"
#include "tools/settings/KazProductInfo.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <system_error>

namespace {

bool namesFile(const std::string& text) {
    std::error_code error;
    return std::filesystem::is_regular_file(kazHostPath(text.c_str()).getValue(), error);
}

/// "Mox 2.4.1 (build 1873, 2026-11-21)".
std::string title(const KazProductInfo& info) {
    std::string more = info.getBuild() != 0 ? "build " + std::to_string(info.getBuild()) : "";
    if (!info.getDate().isEmpty())
        more.append(more.empty() ? "" : ", ").append(info.getDate().getValue());
    return std::string(info.getName().getValue()) + " " + info.getVersion().getValue() +
           (more.empty() ? "" : " (" + more + ")");
}

/// The keys of no meaning, in the order in which they are written.
std::vector<std::string> otherLines(const KazProductInfo& info) {
    // With the sign behind them, so that a longer key of a product's own is not taken for one.
    constexpr std::array known = {
        "%", "name=", "version=", "build=", "date=", "part=", "checksum="};
    std::vector<std::string> lines;
    const std::string text = info.getText().getValue();
    for (std::size_t at = 0, end; (end = text.find('\n', at)) != text.npos; at = end + 1) {
        const std::string line = text.substr(at, end - at);
        if (std::none_of(known.begin(), known.end(),
                         [&](const char* start) { return line.starts_with(start); }))
            lines.push_back(line);
    }
    return lines;
}

std::string partLine(const KazProductInfo::Part& part, KazProductInfo::PartState state) {
    // Indexed by KazProductInfo::PartState.
    constexpr std::array states = {"good", "missing", "unreadable", "wrong size", "wrong checksum"};
    return std::string("part ") + part.path.getValue() + " " +
           (part.version.isEmpty() ? "-" : part.version.getValue()) + " " +
           states[static_cast<std::size_t>(state)];
}

std::string counted(int number, const std::string& what) {
    return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}

bool isUnusable(KazProductInfo::State state) {
    return state == KazProductInfo::Missing || state == KazProductInfo::Unreadable ||
           state == KazProductInfo::Malformed;
}

/// False, and told, when nothing of it can be used.
bool readProduct(const std::string& file, KazProductInfo& info) {
    if (!isUnusable(info.read(file.c_str())))
        return true;
    print_err("%s", printable(info.getProblem().getValue()).c_str());
    openComplaint("moxinfo", file, info.getErrorLine());
    return false;
}

bool measure(KazProductInfo& info, const KazString& root, const KazString& path,
             const KazString& version) {
    if (info.addPart(root, path, version))
        return true;
    print_err("%s: cannot be measured: %s", printable(path.getValue()).c_str(),
              std::generic_category().message(errno).c_str());
    return false;
}

} // namespace

std::string productFile(const std::string& which) {
    if (which == ".")
        return KazProductInfo::getDefaultPath().getValue();
    // A name with a directory is a file even where none is, so that the message names it.
    if (which.find_first_of("/\\") != which.npos || namesFile(which))
        return kazFullPath(which.c_str()).getValue();
    return KazProductInfo::getDefaultPath(which.c_str()).getValue();
}

bool showProduct(const std::string& file, bool all, LineOutput& output) {
    KazProductInfo info;
    if (!readProduct(file, info))
        return false;
    const bool isGood = info.getState() == KazProductInfo::Good;
    if (!isGood)
        print_err("%s", printable(info.getProblem().getValue()).c_str());
    output.line(title(info));
    for (const std::string& line : otherLines(info))
        output.line(line);
    // Parts are named from the directory of the file, so an installation can be moved as a whole.
    const KazString root = kazPathDirPart(file.c_str());
    int problems = 0;
    for (int i = 0; i < info.getPartCount(); ++i) {
        const KazProductInfo::PartState state = info.verifyPart(i, root);
        problems += state != KazProductInfo::PartGood ? 1 : 0;
        if (all || state != KazProductInfo::PartGood)
            output.line(partLine(info.getPart(i), state));
    }
    output.line(counted(info.getPartCount(), "part") + ", " + counted(problems, "problem"));
    return isGood && problems == 0;
}

bool updateProduct(const std::string& file, const std::vector<std::string>& more,
                   const std::string& target) {
    KazProductInfo info;
    if (!readProduct(file, info))
        return false;
    const KazString root = kazPathDirPart(file.c_str());
    for (int i = 0; i < info.getPartCount(); ++i) {
        // A copy, since measuring replaces the part.
        const KazProductInfo::Part part = info.getPart(i);
        if (!measure(info, root, part.path, part.version))
            return false;
    }
    for (const std::string& argument : more) {
        std::string path = argument;
        // As the file spells paths, or a part could be there twice.
        kazMakeRightSlashPath(path.data());
        const KazString version = info.getPart(info.findPart(path.c_str())).version;
        if (!measure(info, root, path.c_str(), version))
            return false;
    }
    return writeOutput(target, info.getText().getValue());
}
