// SPDX-License-Identifier: Apache-2.0
// The copy grows in a directory of its own beside the target, which is signed with the process
// that makes it: a run that was killed leaves nothing that looks like a copy, and the next run
// clears it away. Directories that lead to the target are made on the way, and removed again
// unless the copy is kept.
//
// There is one staging at a time, which the handler of a cancellation finds through `active_`.
#include "staging.h"

#include "merge.h"
#include "names.h"
#include "owner.h"
#include "texts.h"
#include "tools/moxtools.h"

#include <cerrno>
#include <system_error>
#include <utility>

constinit Staging* Staging::active_ = nullptr;

namespace {

bool reportFailure(const KazString& path, int errorNumber) {
    print_err(localText(texts::cannotWrite), shown(path).getValue(),
              std::generic_category().message(errorNumber).c_str());
    return false;
}

} // namespace

Staging::Staging() {
    active_ = this;
}

Staging::~Staging() {
    close();
    // After close(), which a cancellation in between may still ask for.
    active_ = nullptr;
}

void Staging::discardAll() {
    if (active_ != nullptr)
        active_->close();
}

bool Staging::open(const KazString& target, const KazString& system) {
    targetPath_ = target;
    system_ = system;
    if (target_.open(target) != 0)
        return reportFailure(joined(target, system), errno);
    KazFileStatus earlier;
    isOver_ = target_.directory().getStatus(system, earlier) == 0;
    // Before the new one is made, as what a killed run has left may fill the disk.
    clearStale(target_.directory());
    if (makeIn(target_.directory().openSelf(), target))
        return true;
    const int reason = errno;
    // An earlier copy can be written to where the directory around it cannot.
    return (isOver_ && (reason == EACCES || reason == EPERM || reason == EROFS) &&
            makeElsewhere()) ||
           // What is in the way then is not where the copy goes.
           reportFailure(joined(target, reason == EEXIST ? name_ : system), reason);
}

bool Staging::makeIn(KazDirectory parent, const KazString& path) {
    if (!parent.isOpen())
        return false;
    parent_ = std::move(parent);
    parentPath_ = path;
    staging_ = makeStaging(parent_, name_);
    return staging_.isOpen();
}

/// Where temporary files go: beside a temporary directory, which tells where that is.
bool Staging::makeElsewhere() {
    const KazString temporary = TI_tmpdir(nullptr, "moxcopy");
    if (temporary.isEmpty())
        return false;
    const bool isMade =
        makeIn(KazDirectory(temporary).openParent(), kazDirForDisplay(kazPathDirPart(temporary)));
    TI_rmdir(temporary);
    return isMade;
}

void Staging::commit(CopyResult& result) {
    keptFiles_ =
        moveIntoPlace(staging_, target_.directory(), system_, targetPath_, isOver_, result);
    target_.keep();
}

bool Staging::remove() {
    try {
        return removeStaging(parent_, name_, staging_);
    } catch (const KazMemoryException&) {
        return false;
    }
}

bool Staging::clear() {
    if (!staging_.isOpen())
        return true;
    // What made the run fail may have been a lack of memory that is over now.
    const bool isRemoved = remove() || remove();
    staging_.close();
    return isRemoved;
}

bool Staging::close() {
    const bool isCleared = clear();
    if (!isCleared)
        print_err(localText(texts::cannotRemove), shownEntry(parentPath_, name_).getValue());
    target_.remove();
    return isCleared;
}
