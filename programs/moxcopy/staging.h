/// @file
/// Where a copy grows until it is whole.
#pragma once

#include "copy.h"

#include <map>
#include <vector>

/// A directory of this run's own beside the destination. What was copied appears
/// in the destination only by commit(), so that an earlier copy is untouched
/// until then; whatever else happens, everything that the run has made is
/// removed again: by the destructor, or by discardAll() when the process ends
/// without unwinding.
class Staging {
public:
    Staging();
    ~Staging();
    Staging(const Staging&) = delete;
    Staging& operator=(const Staging&) = delete;

    /// Makes the directories. On failure says why and gives false.
    bool open(const KazString& target, const KazString& system);

    /// Where to copy to: an empty directory after open().
    const KazString& directory() const { return directory_; }

    /// Moves the files of @p result to the destination: as a whole when there is
    /// no earlier copy, else one by one over the earlier ones; files that only
    /// the earlier copy has stay there. A file that cannot be moved becomes a
    /// failure of @p result.
    void commit(CopyResult& result);

    /// The cancel handler: removes what the run has made so far.
    static void discardAll();

private:
    void discard();
    int makeTarget(const KazString& target);
    void moveFiles(CopyResult& result);
    bool enter(const KazString& relative, CopyResult& result);

    KazString destination_;
    KazString temporary_;
    KazString directory_;
    bool destinationExists_ = false;
    std::map<KazString, bool> entered_;      ///< directories of the destination, usable or not
    std::vector<KazString> madeDirectories_; ///< parents of the destination, outermost last

    static Staging* active_;
};
