// SPDX-License-Identifier: Apache-2.0
/// @file
/// The files of a configuration: how one is read, and how each leads to the next.
#pragma once

#include "tools/platform/host.h"
#include "tools/strings/KazString.h"

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace kaz::detail {

struct CloseStream {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};

/// A file that is open for reading, and what it was when it was opened.
struct ToolInfoSource {
    std::unique_ptr<std::FILE, CloseStream> stream;
    host::FileStatus status;

    explicit operator bool() const { return stream != nullptr; }
};

/// A file that there is no memory for does not count as missing: variables would
/// silently have other values.
ToolInfoSource openToolInfo(const char* path);

/// All of a file, in a block of its size. False when there is no such file; one that
/// cannot be read to its end is as good as none, and one of more than 256 MiB is
/// refused with a message that shows @p name.
bool readToolInfo(const ToolInfoSource& source, const char* name, std::string& text);

/// A file name as configuration spells it, made explicit and native.
KazString resolvedToolInfo(const char* value);

/// Whoever reads a chain of files.
class ToolInfoReader {
public:
    /// What "ToolInfo" is after the files that were read; null or "" where they end.
    virtual const char* next() const = 0;
    /// Takes one more file, from which next() comes from now on.
    virtual void read(std::string text, const KazString& file) = 0;

protected:
    ToolInfoReader() = default;
    ToolInfoReader(const ToolInfoReader&) = default;
    ToolInfoReader& operator=(const ToolInfoReader&) = default;
    ~ToolInfoReader() = default;
};

enum class ToolInfoChainEnd {
    Complete,   ///< no further file is named
    Unreadable, ///< the next one cannot be read
    Cycle,      ///< the next one has been read already
    TooLong,    ///< there would be more than ten
};

/// Reads the files that those of @p names, the first one at least, lead to, and appends
/// their names. Where another one was asked for, @p stop is its name.
ToolInfoChainEnd followChain(ToolInfoReader& reader, std::vector<KazString>& names,
                             KazString& stop);

} // namespace kaz::detail
