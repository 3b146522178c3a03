/// @file
/// Reading ToolInfo files into the table.
#pragma once

#include "tools/config/toolinfo.h"

namespace kaz::detail {

/// The overwrite flag.
bool overwrites();

/// Sets the overwrite flag, and sets it back when its scope ends.
class ScopedOverwrite {
public:
    explicit ScopedOverwrite(bool overwrite) : previous(TI_V_set_overwrite(overwrite)) {}
    ~ScopedOverwrite() { TI_V_set_overwrite(previous); }
    ScopedOverwrite(const ScopedOverwrite&) = delete;
    ScopedOverwrite& operator=(const ScopedOverwrite&) = delete;

private:
    bool previous;
};

/// Reads one file into the table under the overwrite flag. False when it does
/// not open or is no regular file.
bool readToolInfoFile(const char* path);

} // namespace kaz::detail
