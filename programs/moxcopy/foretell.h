// SPDX-License-Identifier: Apache-2.0
/// @file
/// What a run would do.
#pragma once

#include "plan.h"

/// Prints a line for each thing that the copy of what is planned from @p source would
/// do at the destination, and last how much that is; changes nothing:
///
///     make DIR
///     copy FILE BYTES
///     replace FILE BYTES
///     keep FILE              only the earlier copy has it
///     fail FILE (REASON)
///     plan: N directories, N files, N bytes; N replaced, N failures
///
/// Names are those of the destination as the host spells them, made printable. The
/// question whether an earlier copy may be overwritten counts as answered with yes.
/// False when something would fail.
bool foretell(const Plan& plan, const CopyOptions& options, const KazDirectory& source);
