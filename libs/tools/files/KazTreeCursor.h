// SPDX-License-Identifier: Apache-2.0
/// @file
/// A place in a directory tree.
#pragma once

#include "tools/export.h"
#include "tools/files/KazDirectory.h"
#include "tools/strings/KazString.h"

#include <functional>
#include <memory>

namespace kaz::detail {
class CursorLevels;
class TreeCopy;
class TreeRemoval;
} // namespace kaz::detail

/// One directory of a tree, which is open, and the way back to the top. Moves down
/// by name and up again, however deep the tree is: 17 handles at most are held at a
/// time, and a directory further up is opened again when the cursor comes back to it,
/// as what holds the one below. It is compared with what it was; where the tree was
/// moved about meanwhile, the names are followed again from the top.
///
///     KazTreeCursor cursor(KazDirectory("\\home\\me"));
///     if (cursor.enter("project") == 0) {
///         cursor.directory().list("*", entries);
///         cursor.leave();
///     }
///
/// Memory for names grows with the depth, not with its square. Moving costs two system
/// calls, and none on the way up within 16 levels.
class KAZ_API KazTreeCursor {
public:
    /// At @p top, which need not be open: then nothing can be entered.
    explicit KazTreeCursor(KazDirectory top);
    /// Takes the place over; @p other can then only be assigned to or destroyed.
    KazTreeCursor(KazTreeCursor&& other) noexcept;
    KazTreeCursor& operator=(KazTreeCursor&& other) noexcept;
    KazTreeCursor(const KazTreeCursor&) = delete;
    KazTreeCursor& operator=(const KazTreeCursor&) = delete;
    ~KazTreeCursor();

    /// The present directory; valid until the cursor moves. It is not open when leave()
    /// has not found it again.
    const KazDirectory& directory() const;
    /// What was known of it when it was entered.
    const KazFileStatus& getStatus() const;
    /// How many levels below the top; 0 there.
    int getDepth() const;
    /// The native path from the top; "" there. Costs the length of it.
    KazString getPath() const;

    /// Goes into a directory of the present one: 0, or -1 with errno set and nothing
    /// changed. ENOTDIR for a link, which is never followed; ELOOP for a directory that
    /// is already one of those above.
    int enter(const char* name);
    /// Goes back up: 0, or -1 with errno set. At the top that is EINVAL and changes
    /// nothing; ENOENT means that the directory above cannot be found again: the cursor
    /// is there, but it is not open.
    int leave();

    /// Goes through all that is below the present directory and comes back. @p visit gets
    /// each entry while the cursor is in its directory; one that is a directory is entered
    /// later if the answer is true. The entries of a directory come before what is below any
    /// of them. Goes on after a failure: 0, or -1 with the first one's errno. Memory for the
    /// names of the directories still to be entered.
    int walk(const std::function<bool(const KazDirectoryEntry& entry)>& visit);

private:
    friend class kaz::detail::TreeCopy;
    friend class kaz::detail::TreeRemoval;

    /// Goes on in @p other as the present directory, to which leave() in it does not lead
    /// back by "..": it and the one above keep their handles. ELOOP as for enter().
    int jump(KazDirectory other);

    std::unique_ptr<kaz::detail::CursorLevels> levels_;
};
