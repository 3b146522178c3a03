// SPDX-License-Identifier: Apache-2.0
/// @file
/// Which command creates an editor.
#pragma once

#include "tools/export.h"
#include "tools/strings/KazString.h"

/// Process-wide answer to how an editor is started. A tool with editors of its
/// own derives from this class and installs its object by constructing it;
/// the object stays the tool's.
class KAZ_API KazEditorsBase {
public:
    /// Installs this object; the one constructed last wins.
    KazEditorsBase();
    KazEditorsBase(const KazEditorsBase&) = delete;
    KazEditorsBase& operator=(const KazEditorsBase&) = delete;

    /// Leaves no object installed, whichever it was.
    virtual ~KazEditorsBase();

    /// The command that creates the editor @p editorName; here the name itself,
    /// empty for null.
    virtual KazString getCreationCommand(const char* editorName);

    /// The installed object. When there is none, a plain one is made and
    /// installed; it lives as long as the process.
    static KazEditorsBase* getInstance();

private:
    static KazEditorsBase* theInstance;
};
