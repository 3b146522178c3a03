// SPDX-License-Identifier: Apache-2.0
// The walk is the copy's own, with the steps that write exchanged for steps that look. What the
// copy would have made by then is not there, so it is remembered instead: directories by how many
// levels the walk is inside them (`made_`), names that are taken where case does not count, and
// the places that the copy would have dated. So a plan costs memory in proportion to what it
// foretells.
#include "tools/files/detail/TreePlan.h"

#include "tools/platform/host.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace kaz::detail {

namespace {

constexpr int wantsWriting = 2, wantsReading = 4;

/// Permissions can be asked for by path alone; one that is too long to be asked for tells
/// nothing.
bool mayUse(const KazString& path, int mode) {
    return host::access(path.getValue(), mode) == 0 ||
           (errno != EACCES && errno != EROFS && errno != EPERM);
}

std::string lowered(const char* path) {
    return KazDirectory::withoutCase(path).getValue();
}

} // namespace

// The cursor gets a handle of its own, as the top's is asked for more below.
TreePlan::TreePlan(KazFileManager& manager, const char* pattern, bool recursive,
                   const KazString& sourcePath, PlanTop top, Visit visit, void* data)
    : TreeCopy(manager, pattern, recursive, sourcePath, top.directory.openSelf(), top.path),
      parent_(std::move(top.parent)),
      topName_(top.name),
      isTopMade_(top.isMade),
      made_(top.isMade ? 1 : 0),
      foldsCase_((top.isMade ? parent_ : top.directory).ignoresCase()),
      topLength_(host::hostPath((top.path + "\\").getValue()).size()),
      visit_(visit),
      data_(data) {
    std::error_code error;
    top_ = std::filesystem::weakly_canonical(host::hostPath(top.path.getValue()), error);
    parent_.getStatus(parentStatus_);
    if (isTopMade_)
        this->visit(KazPlannedAction::Make, sourcePath, top.path);
    else if (!top.directory.isOpen())
        lose();
}

bool TreePlan::run() {
    return TreeCopy::run();
}

/// The walk of a copy meets the directory that it has made; here it is not there yet.
void TreePlan::listed(std::vector<KazDirectoryEntry>& entries) {
    KazFileStatus status;
    if (!isTopMade_ || !isWanted(topName_) || source().getStatus(status) != 0 ||
        !status.isSameFile(parentStatus_))
        return;
    KazDirectoryEntry& top = entries.emplace_back();
    top.name = topName_;
    top.kind = KazFileKind::Directory;
}

bool TreePlan::wouldBeTarget(const char* name) const {
    KazFileStatus status;
    return isTopMade_ && topName_ == name && source().getStatus(status) == 0 &&
           status.isSameFile(parentStatus_);
}

void TreePlan::passedOver(const KazDirectoryEntry& entry, bool) {
    visit(KazPlannedAction::Skip, sourceOf(entry.name), targetOf(entry.name));
}

void TreePlan::visit(KazPlannedAction::Kind kind, const KazString& source,
                     const KazString& target) {
    visit_({kind, source, target}, data_);
}

/// Nothing has the name in the target.
bool TreePlan::isNew(const char* name) const {
    KazFileStatus status;
    return made_ > 0 || (target().getStatus(name, status) != 0 && errno == ENOENT);
}

/// A directory that the copy makes is the user's own.
bool TreePlan::isWritable() const {
    return made_ > 0 || mayUse(targetPath(), wantsWriting);
}

/// Where case counts, two names of the source never meet in the target.
bool TreePlan::isTaken(const char* name) const {
    return foldsCase_ && taken_.contains(lowered(targetOf(name)));
}

bool TreePlan::isTakenByFile(const char* name) const {
    const auto found = foldsCase_ ? taken_.find(lowered(targetOf(name))) : taken_.end();
    return found != taken_.end() && found->second;
}

void TreePlan::take(const char* name, bool isFile) {
    if (foldsCase_)
        taken_.insert({lowered(targetOf(name)), isFile});
}

void TreePlan::makeTarget(const char* name) {
    // Silent where nothing is made: what that means for the files is told at each of them.
    if (isLost() || !isNew(name) || !isWritable() || isTaken(name))
        return;
    take(name, false);
    note(name);
    visit(KazPlannedAction::Make, sourceOf(name), targetOf(name));
}

void TreePlan::enterTarget(const char* name) {
    // A directory that was taken by the plan before is there for the copy, so it counts as made.
    const bool isMade = !isLost() && isNew(name) && isWritable() && !isTakenByFile(name);
    pushTarget(name);
    if (isMade)
        ++made_;
    else if (isLost() || goIntoTarget(name) != 0)
        lose();
}

void TreePlan::leaveTarget() {
    popTarget();
    if (isLost())
        regain();
    else if (made_ > 0)
        --made_;
    else
        goOutOfTarget();
}

/// Regular files, and links to such, that open for reading.
bool TreePlan::isReadable(const KazDirectoryEntry& entry) const {
    KazFileStatus status;
    return source().getStatus(entry.name, status, entry.kind == KazFileKind::Link) == 0 &&
           status.kind == KazFileKind::File && mayUse(sourceOf(entry.name), wantsReading);
}

bool TreePlan::copyFile(const KazDirectoryEntry& entry) {
    if (isLost() || !isReadable(entry))
        return false;
    // Before the look at the target, where the other name is not yet.
    if (isTaken(entry.name)) {
        isClash_ = true;
        visit(KazPlannedAction::Clash, sourceOf(entry.name), targetOf(entry.name));
        return false;
    }
    if (!isNew(entry.name))
        return replaceFile(entry);
    if (!isWritable())
        return false;
    take(entry.name, true);
    note(entry.name);
    visit(KazPlannedAction::Copy, sourceOf(entry.name), targetOf(entry.name));
    return true;
}

/// Below the top no link is followed, so that the names lead on from where that is.
std::filesystem::path TreePlan::hostTarget(const char* name) const {
    const std::string path = host::hostPath(targetOf(name).getValue());
    return top_ / path.substr(std::min(topLength_, path.size()));
}

/// Writing dates the directory, too.
void TreePlan::note(const char* name) {
    const std::filesystem::path path = hostTarget(name);
    written_.insert(path);
    written_.insert(path.parent_path());
}

/// A link in the target may lead to what the copy has dated by then.
bool TreePlan::leadsToOwnWork(const char* name) const {
    // As many as hosts follow; a ring of links ends here.
    constexpr int mostLinks = 40;
    std::error_code error;
    std::filesystem::path path = hostTarget(name);
    for (int i = 0; i < mostLinks && std::filesystem::is_symlink(path, error); ++i)
        path = path.parent_path() / std::filesystem::read_symlink(path, error);
    path = std::filesystem::weakly_canonical(path, error);
    return !error && written_.contains(path.has_filename() ? path : path.parent_path());
}

/// By the rules of the copy, which takes what was written since it began for its own work:
/// of what is there already that is the file with a date to come.
bool TreePlan::replaceFile(const KazDirectoryEntry& entry) {
    KazFileStatus own, existing, behind;
    source().getStatus(entry.name, own, true);
    if (target().getStatus(entry.name, existing) != 0)
        return false;
    target().getStatus(entry.name, behind, true);
    const bool isLink = existing.kind == KazFileKind::Link;
    if ((behind.kind != KazFileKind::Missing && behind.modified > startTime()) ||
        (isLink && leadsToOwnWork(entry.name))) {
        isClash_ = true;
        visit(KazPlannedAction::Clash, sourceOf(entry.name), targetOf(entry.name));
        return false;
    }
    // A file never replaces a directory, and a file is never copied onto itself.
    if (existing.kind == KazFileKind::Directory || existing.isSameFile(own) || !isWritable())
        return false;
    take(entry.name, true);
    note(entry.name);
    visit(KazPlannedAction::Replace, sourceOf(entry.name), targetOf(entry.name));
    return true;
}

void TreePlan::told(const KazString& path, const char* name) {
    if (!std::exchange(isClash_, false))
        visit(KazPlannedAction::Fail, path, targetOf(name));
}

} // namespace kaz::detail
