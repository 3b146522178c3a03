// SPDX-License-Identifier: Apache-2.0
/// @file
/// The ToolInfo files line by line: for whoever shows where a definition stands, or
/// what the reader of the files passes over without a word (see toolinfo.h).
///
///     TI_Vscan(
///         [](const KazVariableLine* line, void*) {
///             if ((line->kind & KazLineKindMask) == KazLineDefinition)
///                 print_msg("%s:%d: %s", line->file, line->line, line->name);
///         },
///         nullptr);
#pragma once

#include "tools/export.h"

/// What a line is. Where the chain ends at a file that is named but not read, that
/// comes as a further visit, which names the definition of "ToolInfo" responsible.
enum KazVariableLineKind : int {
    KazLineDefinition,  ///< `name=value`; whether it is in force is another matter
    KazLineComment,     ///< begins with "%" or "."
    KazLineBlank,       ///< nothing but white space
    KazLineNoEquals,    ///< defines nothing, because there is no "="
    KazLineNoName,      ///< defines nothing, because nothing stands before "="
    KazChainUnreadable, ///< `value`, the next file, cannot be read
    KazChainCycle,      ///< `value`, the next file, has been read already
    KazChainTooLong,    ///< `value`, the next file, would be the eleventh

    KazLineKindMask = 0xFF,
    KazLineIsCut = 0x100, ///< the line has more than 5120 characters: the next visit, of the
                          ///< same number, is the rest of it, read as a line of its own
    KazLineHasNul = 0x200 ///< the line holds a NUL byte, and what follows that is not read
};

/// One line. The texts live during the call.
struct KazVariableLine {
    const char* file;  ///< the name as TI_Vfile gives it; "" for a chain that goes on by what
                       ///< TI_Var had said before the first lookup
    int line;          ///< counted from 1 as editors do; 0 where `file` is ""
    int kind;          ///< a KazVariableLineKind, with the two marks above
    const char* name;  ///< of a definition, as it is bound; "ToolInfo" at the end of the chain;
                       ///< else null
    const char* value; ///< of a definition (also one without name), as it is bound; the file
                       ///< that was tried; else the line itself, without its end
};

/// Reads the chain of files once more and calls @p visit for each line, in the order in
/// which they are read, with @p data handed through. What the files say now is shown,
/// which may be other than what a running tool has read. Reads the variables if that has
/// not happened yet. Returns 0, or -1 for a null @p visit and without a first file.
/// Throws KazMemoryException, and what @p visit throws. Linear time.
KAZ_API int TI_Vscan(void (*visit)(const KazVariableLine* line, void* data), void* data);

/// The same for one file, such as one for TI_V_user_file: "ToolInfo" in it leads nowhere.
/// -1 for a null @p path and a file that cannot be read, too.
KAZ_API int TI_Vscan_file(const char* path, void (*visit)(const KazVariableLine* line, void* data),
                          void* data);

/// Calls @p visit with each environment variable whose name begins with "KAZ_", in byte
/// order of the names, each once. The texts live during the call; @p visit may change the
/// environment. Does nothing for a null @p visit.
KAZ_API void TI_EnvVwalk(void (*visit)(const char* variable, const char* value, void* data),
                         void* data);
