// SPDX-License-Identifier: Apache-2.0
/// @file
/// The document.
#pragma once

#include "inventory.h"

class KazDocWriter;
class KazProgressHandle;

/// What "brewery" is for "\plants\brewery", printable; the path itself for a root.
KazString projectName(const ReportOptions& options);

/// Writes all of @p inventory to @p doc: about the project, contents, an overview, a section
/// for each system, and what is missing. Names are shown as on a terminal, so that none looks
/// like more than one name. The @p progress moves by @p share percent.
void writeReport(KazDocWriter& doc, const Inventory& inventory, const ReportOptions& options,
                 KazProgressHandle& progress, double share);
