// SPDX-License-Identifier: Apache-2.0
/// @file
/// Where a copy grows until it is whole.
#pragma once

#include "copy.h"
#include "made_directories.h"

/// A directory of this run's own beside the destination, held open as long as it is
/// there: nothing in it is reached by a path. What was copied appears in the
/// destination only by commit(), so that an earlier copy is untouched until then;
/// whatever else happens, everything that the run has made is removed again: by
/// close(), by the destructor, or by discardAll() when the process ends without
/// unwinding. What a run that was killed has left is cleared away by the next one.
class Staging {
public:
    Staging();
    ~Staging();
    Staging(const Staging&) = delete;
    Staging& operator=(const Staging&) = delete;

    /// Makes the directories. On failure says why and gives false.
    bool open(const KazString& target, const KazString& system);

    /// Where to copy to: into a new directory with the system's name.
    const KazDirectory& directory() const { return staging_; }

    /// Moves what was copied to the destination: as a whole when there is no earlier
    /// copy, else file by file over the earlier ones. What cannot be moved becomes a
    /// failure of @p result.
    void commit(CopyResult& result);

    /// How many files of an earlier copy commit() has left as they were.
    std::size_t keptFiles() const { return keptFiles_; }

    /// Removes the directory. False, which has been said then, when some of it remains.
    bool close();

    /// The cancel handler: removes what the run has made so far.
    static void discardAll();

private:
    bool makeIn(KazDirectory parent, const KazString& path);
    bool makeElsewhere();
    bool clear();
    bool remove();

    KazString targetPath_;
    KazString system_;
    MadeDirectories target_;
    KazDirectory parent_; ///< holds the staging directory
    KazString parentPath_;
    KazString name_;       ///< the staging directory's
    KazDirectory staging_; ///< open as long as there is one
    bool isOver_ = false;  ///< there is an earlier copy
    std::size_t keptFiles_ = 0;

    static Staging* active_;
};
