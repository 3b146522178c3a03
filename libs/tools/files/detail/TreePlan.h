// SPDX-License-Identifier: Apache-2.0
/// @file
/// What a copy of a tree would do.
#pragma once

#include "tools/files/detail/TreeCopy.h"

#include <filesystem>
#include <map>
#include <set>
#include <string>

namespace kaz::detail {

/// The directory into which the tree would be copied.
struct PlanTop {
    KazDirectory directory; ///< not open where it is not there
    KazString path;
    bool isMade = false; ///< it would be made, in @p parent under @p name
    KazDirectory parent;
    KazString name;
};

/// The walk of the copy, which looks and changes nothing. A directory that the copy would
/// make is not there: below it nothing can be in the way but the copy's own files, and
/// these only where names are not told apart by case.
class TreePlan : public TreeCopy {
public:
    using Visit = void (*)(const KazPlannedAction&, void*);

    TreePlan(KazFileManager& manager, const char* pattern, bool recursive,
             const KazString& sourcePath, PlanTop top, Visit visit, void* data);

    /// False when something would fail.
    bool run();

protected:
    void begun() override {}
    void listed(std::vector<KazDirectoryEntry>& entries) override;
    void passedOver(const KazDirectoryEntry& entry, bool isExcluded) override;
    void makeTarget(const char* name) override;
    void enterTarget(const char* name) override;
    void leaveTarget() override;
    bool copyFile(const KazDirectoryEntry& entry) override;
    void copied(const char*) override {}
    void told(const KazString& path, const char* name) override;
    bool wouldBeTarget(const char* name) const override;

private:
    void visit(KazPlannedAction::Kind kind, const KazString& source, const KazString& target);
    bool isNew(const char* name) const;
    bool isReadable(const KazDirectoryEntry& entry) const;
    bool isWritable() const;
    bool isTaken(const char* name) const;
    bool isTakenByFile(const char* name) const;
    void take(const char* name, bool isFile);
    bool replaceFile(const KazDirectoryEntry& entry);
    bool leadsToOwnWork(const char* name) const;
    void note(const char* name);
    std::filesystem::path hostTarget(const char* name) const;

    KazDirectory parent_; ///< open when the top would be made
    KazString topName_;
    KazFileStatus parentStatus_;
    bool isTopMade_;
    std::size_t made_;                  ///< levels that are not there yet
    bool foldsCase_;                    ///< of the target's file system
    std::map<std::string, bool> taken_; ///< lowered paths of what the plan writes; is it a file?
    std::filesystem::path top_;         ///< of the target, without links
    std::size_t topLength_;             ///< of its path as the host spells it
    std::set<std::filesystem::path> written_; ///< what the copy will have dated, below top_
    Visit visit_;
    void* data_;
    bool isClash_ = false; ///< the failure to come has been told as one
};

} // namespace kaz::detail
