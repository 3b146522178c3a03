// SPDX-License-Identifier: Apache-2.0
// Three states of a directory are kept: as it was before, as a run without failures leaves it,
// and as it is. A file of the present state that is neither as before nor as after the good run
// is half done. The copies are removed only when the directory has been put back; until then they
// are all that the user has left.
#include "moxtool/swept_files.h"

#include "tools/moxtools.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <iterator>
#include <system_error>
#include <vector>

namespace fs = std::filesystem;

namespace {

/// All below a directory, from there on; folders before what is in them.
std::vector<fs::path> entriesOf(const fs::path& root) {
    std::vector<fs::path> entries;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root))
        entries.push_back(entry.path().lexically_relative(root));
    // A folder is a prefix of what is in it, so it sorts before that.
    std::sort(entries.begin(), entries.end());
    return entries;
}

fs::file_type typeOf(const fs::path& path) {
    std::error_code error;
    return fs::symlink_status(path, error).type();
}

bool haveSameBytes(const fs::path& a, const fs::path& b) {
    // Sizes first: most files that differ are told apart without reading them.
    if (fs::file_size(a) != fs::file_size(b))
        return false;
    std::ifstream first(a, std::ios::binary), second(b, std::ios::binary);
    using Bytes = std::istreambuf_iterator<char>;
    return first && second && std::equal(Bytes(first), Bytes(), Bytes(second), Bytes());
}

bool areSame(const fs::path& a, const fs::path& b) {
    const fs::file_type type = typeOf(a);
    if (type != typeOf(b))
        return false;
    if (type == fs::file_type::symlink)
        return fs::read_symlink(a) == fs::read_symlink(b);
    return type != fs::file_type::regular || haveSameBytes(a, b);
}

/// Others than these are nobody's contents.
bool isKept(fs::file_type type) {
    return type == fs::file_type::regular || type == fs::file_type::symlink ||
           type == fs::file_type::directory;
}

/// What is the same already is not written: dates stay, and the disk has less to do.
void copyEntry(const fs::path& from, const fs::path& to) {
    const fs::file_type type = typeOf(from);
    if (!isKept(type))
        return;
    if (!areSame(from, to)) {
        // The kind may have changed, and neither copy nor create_directory replaces another kind.
        fs::remove_all(to);
        if (type == fs::file_type::directory)
            fs::create_directory(to);
        else
            fs::copy(from, to, fs::copy_options::copy_symlinks);
    }
    // Permissions of a link would be those of the file that it leads to.
    if (type != fs::file_type::symlink)
        fs::permissions(to, fs::status(from).permissions());
}

void copyAll(const fs::path& from, const fs::path& to) {
    for (const fs::path& entry : entriesOf(from))
        copyEntry(from / entry, to / entry);
}

} // namespace

SweptFiles::SweptFiles(const fs::path& directory) : root_(directory) {
    if (root_.empty())
        return;
    const KazString made = kazHostPath(TI_tmpdir(nullptr, "sweep"));
    if (made.isEmpty())
        throw fs::filesystem_error("cannot keep copies", fs::temp_directory_path(),
                                   std::error_code(errno, std::generic_category()));
    kept_ = made.getValue();
    before_ = kept_ / "before";
    good_ = kept_ / "good";
    try {
        fs::create_directory(before_);
        fs::create_directory(good_);
        copyAll(root_, before_);
    } catch (const fs::filesystem_error&) {
        // Half a copy is no use to anybody, and may have filled the disk.
        removeCopies();
        throw;
    }
}

SweptFiles::~SweptFiles() {
    if (isRestored_ && !kept_.empty())
        removeCopies();
}

void SweptFiles::removeCopies() const {
    std::error_code error;
    fs::remove_all(kept_, error);
}

void SweptFiles::keepGood() {
    if (!root_.empty())
        copyAll(root_, good_);
}

std::string SweptFiles::spoilt() const {
    if (root_.empty())
        return {};
    for (const fs::path& entry : entriesOf(root_)) {
        const fs::file_type type = typeOf(root_ / entry);
        if (type != fs::file_type::directory && !areSame(root_ / entry, before_ / entry) &&
            !areSame(root_ / entry, good_ / entry))
            return entry.string();
    }
    return {};
}

void SweptFiles::restore() {
    if (root_.empty())
        return;
    // Until all is back the copies are kept, also when this is left by an exception.
    isRestored_ = false;
    try {
        // What is new goes first, as it may stand where a directory has to be put back. Below a
        // folder that is gone already nothing is found, which isKept takes for nothing to do.
        for (const fs::path& entry : entriesOf(root_))
            if (typeOf(before_ / entry) == fs::file_type::not_found &&
                isKept(typeOf(root_ / entry)))
                fs::remove_all(root_ / entry);
        copyAll(before_, root_);
        isRestored_ = true;
    } catch (const fs::filesystem_error&) {
        print_err("moxtool sweep: the files as they were are in %s",
                  kazPrintable(before_.c_str()).getValue());
        throw;
    }
}
