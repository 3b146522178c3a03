// SPDX-License-Identifier: Apache-2.0
// A staging directory is known by its name and by a record in it, which names the process that
// made it. Either can be missing when a process is killed in the middle, so each is enough to
// tell what the directory is; what is neither signed nor empty is somebody's data and left alone.
// It is stale only when its maker is known not to run any more.
#include "owner.h"

#include "tools/moxtools.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <string_view>
#include <vector>

namespace {

constexpr char prefix[] = ".moxcopy-";
constexpr char record[] = "owner";
constexpr char heading[] = "moxcopy is copying here";

using Stream = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

/// The name holds the number of its maker and when that was started: before the record
/// is written, and after it is removed, nothing else tells whose it is.
bool isStagingName(std::string_view name) {
    return name.size() > sizeof prefix && name.starts_with(prefix) &&
           name.find_first_not_of("0123456789.-", sizeof prefix - 1) == name.npos;
}

/// What stands behind the place in this process's stamp, as a part of a name.
KazString ownPart() {
    KazString part = kazProcessStamp();
    // The place is left out: a directory is looked at where it was made, and its text may be long.
    part = part.subStringFrom(part.find(' ') + 1);
    part.replaceAll(" ", "-");
    return part;
}

KazString newName(const KazString& owner, int turn) {
    KazString name;
    name.format("%s%s-%d", prefix, owner.getValue(), turn);
    return name;
}

/// Does the process still run that has made a directory of this name here? As
/// kazIsRunning.
int isMakerRunning(const KazString& name) {
    const KazString own = kazProcessStamp();
    KazString owner = name.subStringFrom(static_cast<int>(sizeof prefix) - 1);
    owner = owner.subStringBefore(owner.findLast('-'));
    owner.replaceAll("-", " ");
    return kazIsRunning(own.subStringBefore(own.find(' ') + 1) + owner);
}

/// What it cannot write as a whole it takes away again.
bool writeRecord(const KazDirectory& directory) {
    const KazString stamp = kazProcessStamp();
    // Exclusive: a record that is there is another process's.
    std::FILE* file = directory.openFile(record, "wx");
    if (file == nullptr)
        return false;
    const bool isWritten = std::fprintf(file, "%s\n%s\n", heading, stamp.getValue()) > 0;
    if (std::fclose(file) == 0 && isWritten)
        return true;
    const int reason = errno;
    directory.removeFile(record);
    errno = reason;
    return false;
}

/// What the record says: whole, else "". @p isOne: it is such a record.
KazString readRecord(const KazDirectory& directory, bool& isOne) {
    const Stream file(directory.openFile(record, "r"), std::fclose);
    // More than a stamp has; a line that is cut has no newline and so is no whole record.
    std::array<char, 200> line;
    isOne = file != nullptr && std::fgets(line.data(), line.size(), file.get()) != nullptr &&
            KazString(line.data()) == KazString(heading) + '\n';
    if (!isOne || std::fgets(line.data(), line.size(), file.get()) == nullptr)
        return KazString();
    const KazString stamp = line.data();
    return stamp.find('\n') < 0 ? KazString() : stamp.subStringBefore(stamp.find('\n'));
}

/// Neither data nor a record are in it.
bool isUnwritten(const KazDirectory& directory) {
    std::vector<KazDirectoryEntry> entries;
    KazFileStatus status;
    if (directory.list("*", entries) != 0)
        return false;
    return entries.empty() || (entries.size() == 1 && entries.front().name == record &&
                               directory.getStatus(record, status) == 0 && status.size == 0);
}

bool isStale(const KazString& name, const KazDirectory& directory) {
    bool isOne = false;
    const KazString stamp = readRecord(directory, isOne);
    // Only a certain no: -1, of another machine for one, keeps the directory.
    return (stamp.isEmpty() ? isMakerRunning(name) : kazIsRunning(stamp)) == 0;
}

/// The name under which a directory is now.
KazString nameOf(const KazDirectory& directory, const KazDirectory& parent) {
    KazFileStatus own, found;
    std::vector<KazDirectoryEntry> entries;
    if (directory.getStatus(own) != 0)
        return KazString();
    parent.list("*", entries);
    for (const KazDirectoryEntry& entry : entries)
        if (entry.kind == KazFileKind::Directory && parent.getStatus(entry.name, found) == 0 &&
            found.isSameFile(own))
            return entry.name;
    return KazString();
}

bool isUnder(const KazDirectory& parent, const KazString& name, const KazDirectory& directory) {
    KazFileStatus own, found;
    return directory.getStatus(own) == 0 && parent.getStatus(name, found) == 0 &&
           found.isSameFile(own);
}

/// Directories that were copied with their permissions may be closed to their owner.
void openUp(KazTreeCursor cursor) {
    cursor.walk([&cursor](const KazDirectoryEntry& entry) {
        if (entry.kind == KazFileKind::Directory)
            cursor.directory().setMode(entry.name, 0700);
        return true;
    });
}

bool isEmptied(const KazDirectory& staging) {
    std::vector<KazDirectoryEntry> entries;
    bool done = staging.list("*", entries) == 0;
    for (const KazDirectoryEntry& entry : entries)
        // The record goes last, so that a removal that is cut short can be finished by others.
        // Opened up only where the removal fails, as most trees need it nowhere.
        if (entry.name != record && staging.removeTree(entry.name) != 0) {
            staging.setMode(entry.name, 0700);
            openUp(KazTreeCursor(staging.openDirectory(entry.name)));
            done = staging.removeTree(entry.name) == 0 && done;
        }
    return done && (staging.removeFile(record) == 0 || errno == ENOENT);
}

} // namespace

namespace {

/// Opens what has just been made, and signs it. Anything else than an empty directory
/// has been put in its place.
bool claim(const KazDirectory& parent, const KazString& name, KazDirectory& directory) {
    directory = parent.openDirectory(name);
    if (!directory.isOpen())
        return false;
    // The reason for a directory that is not empty; a failing record replaces it.
    errno = EEXIST;
    return isUnwritten(directory) && writeRecord(directory);
}

/// The directory may be somebody else's by now: nothing in it is touched but an empty record,
/// which is what an opening leaves that fails once the file is there.
void disclaim(const KazDirectory& parent, const KazString& name, KazDirectory& directory) {
    const int reason = errno;
    KazFileStatus status;
    if (directory.getStatus(record, status) == 0 && status.kind == KazFileKind::File &&
        status.size == 0)
        directory.removeFile(record);
    directory.close();
    parent.removeDirectory(name);
    errno = reason;
}

/// A number that is taken is of a copy that this process makes besides, or was left by one. False
/// with errno set, EEXIST where all are taken.
bool makeNext(const KazDirectory& parent, KazString& name) {
    const KazString owner = ownPart();
    for (int turn = 0; turn < 1000; ++turn) {
        name = newName(owner, turn);
        if (parent.makeDirectory(name, 0700) == 0)
            return true;
        if (errno != EEXIST)
            break;
    }
    return false;
}

} // namespace

KazDirectory makeStaging(const KazDirectory& parent, KazString& name) {
    KazDirectory directory;
    if (!makeNext(parent, name))
        return directory;
    try {
        if (!claim(parent, name, directory))
            disclaim(parent, name, directory);
    } catch (...) {
        disclaim(parent, name, directory);
        throw;
    }
    return directory;
}

bool isStaging(const KazDirectory& parent, const KazDirectoryEntry& entry) {
    if (entry.kind != KazFileKind::Directory || !isStagingName(entry.name.getValue()))
        return false;
    const KazDirectory directory = parent.openDirectory(entry.name);
    bool isOne = false;
    errno = 0;
    readRecord(directory, isOne);
    // Another user's cannot be looked into; nothing in it could be copied either.
    return isOne || errno == EACCES || isUnwritten(directory);
}

void clearStale(const KazDirectory& parent) {
    std::vector<KazDirectoryEntry> entries;
    KazString pattern = prefix;
    pattern.append('*');
    parent.list(pattern, entries);
    for (const KazDirectoryEntry& entry : entries) {
        if (!isStaging(parent, entry))
            continue;
        const KazDirectory directory = parent.openDirectory(entry.name);
        if (isStale(entry.name, directory))
            removeStaging(parent, entry.name, directory);
    }
}

bool removeStaging(const KazDirectory& parent, const KazString& name, const KazDirectory& staging) {
    if (!isEmptied(staging))
        return false;
    // The name may have been exchanged; what is removed has to be the directory itself.
    if (isUnder(parent, name, staging))
        return parent.removeDirectory(name) == 0;
    const KazDirectory around = staging.openParent();
    const KazString other = nameOf(staging, around);
    return !other.isEmpty() && around.removeDirectory(other) == 0;
}
