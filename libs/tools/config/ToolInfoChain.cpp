// SPDX-License-Identifier: Apache-2.0
// One walk along the chain serves those who fill the table and those who only show what the files
// say: they differ in what they do with a text, which is the reader's affair. The walk ends for
// one of four reasons and gives that as its result; none is an error here, since a tool runs with
// the files that could be read. A file that vanishes or grows while it is read is read as far as
// it goes, up to a size that no configuration has.
#include "tools/config/detail/ToolInfoChain.h"

#include "tools/app/exceptions/KazMemoryException.h"
#include "tools/config/detail/quoted_name.h"
#include "tools/config/toolinfo.h"
#include "tools/files/detail/read_fully.h"
#include "tools/files/kazpath.h"
#include "tools/messages/messages.h"
#include "tools/messages/trace.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace kaz::detail {

namespace {

// With the first file; a chain that never repeats a name ends here.
constexpr std::size_t chainLimit = 10;

/// No configuration is of that size; a file that never ends would fill the memory.
constexpr std::size_t sizeLimit = std::size_t{256} << 20;

bool refuseSize(const char* name) {
    print_err("%s holds more than %d MiB and is not read", quotedName(name).getValue(),
              static_cast<int>(sizeLimit >> 20));
    return false;
}

/// One file under two spellings is one file.
bool isAmong(const std::vector<KazString>& names, const KazString& name) {
    return std::any_of(names.begin(), names.end(), [&name](const KazString& read) {
        return read == name || host::sameFile(read, name);
    });
}

} // namespace

ToolInfoSource openToolInfo(const char* path) {
    ToolInfoSource source;
    KAZ_TRACE("config", "trying %s", path);
    // The host's failure leaves its reason in errno; a stale ENOMEM would look like one.
    errno = 0;
    source.stream.reset(host::openForReading(path, source.status));
    if (!source && errno == ENOMEM)
        throw KazMemoryException();
    if (!source)
        KAZ_TRACE("config", "not opened: %s: %s", path, host::errorText(errno).c_str());
    return source;
}

bool readToolInfo(const ToolInfoSource& source, const char* name, std::string& text) {
    if (!source)
        return false;
    if (source.status.size > sizeLimit)
        return refuseSize(name);
    // Some files hold more than they say.
    const auto told = static_cast<std::size_t>(source.status.size);
    std::size_t size = 0;
    do {
        // One byte more shows the end of the file.
        text.resize(std::min(std::max(2 * size, told), sizeLimit) + 1);
        size += readFully(source.stream.get(), &text[size], text.size() - size);
        if (size > sizeLimit)
            return refuseSize(name);
        // A text that was filled up to its last byte may go on.
    } while (size == text.size());
    text.resize(size);
    const bool isWhole = std::ferror(source.stream.get()) == 0;
    KAZ_TRACE("config", isWhole ? "read %s, %zu bytes" : "failed to read %s behind %zu bytes", name,
              size);
    return isWhole;
}

KazString resolvedToolInfo(const char* value) {
    // A relative name is meant below the root of the installation, not beside the file that names
    // it.
    const KazString expanded = _TI_hm(value);
    return kazComposePath(TI_myRootDir(), expanded);
}

ToolInfoChainEnd followChain(ToolInfoReader& reader, std::vector<KazString>& names,
                             KazString& stop) {
    for (const char* next; (next = reader.next()) != nullptr && *next != '\0';) {
        stop = resolvedToolInfo(next);
        if (isAmong(names, stop)) {
            KAZ_TRACE("config", "not read again: %s", stop.getValue());
            return ToolInfoChainEnd::Cycle;
        }
        if (names.size() >= chainLimit) {
            KAZ_TRACE("config", "not read, the chain is too long: %s", stop.getValue());
            return ToolInfoChainEnd::TooLong;
        }
        // Read whole before the reader sees it: a file that breaks off defines nothing.
        std::string text;
        if (!readToolInfo(openToolInfo(stop), stop, text))
            return ToolInfoChainEnd::Unreadable;
        reader.read(std::move(text), stop);
        names.push_back(stop);
    }
    return ToolInfoChainEnd::Complete;
}

} // namespace kaz::detail
