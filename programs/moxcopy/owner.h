// SPDX-License-Identifier: Apache-2.0
/// @file
/// Whose the directories are in which copies grow.
#pragma once

#include "tools/files/KazDirectory.h"

/// Makes a directory of this run's own in @p parent, readable by the user alone, and
/// writes into it who has made it. Not open, with errno set, when that fails; nothing is
/// left then, and what somebody else has put in its place is as it was. EEXIST when there is
/// no name left for one. @p name becomes its name.
KazDirectory makeStaging(const KazDirectory& parent, KazString& name);

/// Is an entry such a directory of any run? Told by its name and by what is in it.
bool isStaging(const KazDirectory& parent, const KazDirectoryEntry& entry);

/// Removes all that runs have left in @p parent which ended without clearing up. What
/// cannot be removed, or whose maker may still run, stays.
void clearStale(const KazDirectory& parent);

/// Removes everything in the directory, last the note whose it is, and then the directory
/// itself where it is now: under its name in @p parent, or under another one. False when
/// some of it remains.
bool removeStaging(const KazDirectory& parent, const KazString& name, const KazDirectory& staging);
