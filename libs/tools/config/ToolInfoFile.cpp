// SPDX-License-Identifier: Apache-2.0
#include "tools/app/exceptions/KazMemoryException.h"
#include "tools/config/detail/ToolInfoState.h"
#include "tools/config/detail/quoted_name.h"
#include "tools/config/toolinfo.h"
#include "tools/files/detail/read_fully.h"
#include "tools/files/kazpath.h"
#include "tools/messages/messages.h"
#include "tools/platform/host.h"

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using kaz::detail::quotedName;
using kaz::detail::ToolInfoState;
using kaz::detail::ToolInfoTable;

constexpr std::size_t chainLimit = 10;

/// No configuration is of that size; a file that never ends would fill the memory.
constexpr std::size_t sizeLimit = std::size_t{256} << 20;

struct CloseStream {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};

/// A file that is open for reading, and what it was when it was opened.
struct Source {
    std::unique_ptr<std::FILE, CloseStream> stream;
    kaz::host::FileStatus status;

    explicit operator bool() const { return stream != nullptr; }
};

KazString& rememberedName() {
    return ToolInfoState::instance().name;
}

/// A file that there is no memory for does not count as missing: variables
/// would silently have other values.
Source openFile(const char* path) {
    Source source;
    errno = 0;
    source.stream.reset(kaz::host::openForReading(path, source.status));
    if (!source && errno == ENOMEM)
        throw KazMemoryException();
    return source;
}

/// Opens @p name and remembers it when that works.
Source openAndRemember(const KazString& name) {
    Source source = openFile(name);
    if (source)
        rememberedName() = name;
    return source;
}

bool refuseSize(const char* name) {
    print_err("%s holds more than %d MiB and is not read", quotedName(name).getValue(),
              static_cast<int>(sizeLimit >> 20));
    return false;
}

/// All of a file, in a block of its size, because the table keeps it. False when
/// there is no such file; one that cannot be read to its end is as good as none.
bool readAll(const Source& source, const char* name, std::string& text) {
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
        size += kaz::detail::readFully(source.stream.get(), &text[size], text.size() - size);
        if (size > sizeLimit)
            return refuseSize(name);
    } while (size == text.size());
    text.resize(size);
    return std::ferror(source.stream.get()) == 0;
}

/// A file name as configuration spells it, made explicit and native.
KazString resolvedName(const char* value) {
    const KazString expanded = _TI_hm(value);
    return kazComposePath(TI_myRootDir(), expanded);
}

Source openDefaultFile() {
    Source source = openAndRemember(kazNormalizedPath(_TI_hm("~\\ToolInfo")));
    for (const char* name : {"ToolInfo.W32NTX86", "ToolInfo"}) {
        if (source)
            break;
        source = openAndRemember(kazComposePath(TI_myRootDir(), name));
    }
    return source;
}

Source openFirstFile() {
    if (rememberedName())
        if (Source source = openFile(rememberedName()))
            return source;
    for (const char* variable : {"ToolInfo", "TOOLINFO"}) {
        if (const char* value = kaz::host::environment(variable)) {
            // Remembered even if it does not open: it is what the user asked for.
            rememberedName() = resolvedName(value);
            return openFile(rememberedName());
        }
    }
    return openDefaultFile();
}

void reportNoFile() {
    if (const char* value = kaz::host::environment("ToolInfo"))
        fatal_err("Can't open ToolInfo file: %s,\n"
                  "is ToolInfo environment variable set correctly?\n",
                  quotedName(value).getValue());
    else
        fatal_err("ToolInfo environment variable is not set\n");
}

/// Character classification follows the user's locale from here on.
KazString localeInForce() {
    const char* name = std::setlocale(LC_CTYPE, "");
    return KazString(name != nullptr ? name : std::setlocale(LC_CTYPE, nullptr));
}

/// Reads the files that the table's "ToolInfo" leads to, and appends their names.
/// Earlier definitions win.
void followChain(ToolInfoTable& table, std::vector<KazString>& names) {
    while (names.size() < chainLimit) {
        const char* next = table.find("ToolInfo");
        if (next == nullptr || *next == '\0')
            return;
        const KazString name = resolvedName(next);
        const bool known = std::any_of(names.begin(), names.end(), [&name](const KazString& read) {
            // One file under two spellings is one file.
            return read == name || kaz::host::sameFile(read, name);
        });
        if (known)
            return;
        std::string text;
        if (!readAll(openFile(name), name, text))
            return;
        table.remove("ToolInfo");
        table.defineAll(std::move(text), name, false);
        names.push_back(name);
    }
}

KazString joined(const std::vector<KazString>& names) {
    KazString result;
    for (const KazString& name : names) {
        if (result)
            result += ' ';
        result += name;
    }
    return result;
}

void readFiles() {
    const KazString locale = localeInForce();
    ToolInfoState& state = ToolInfoState::instance();
    ToolInfoTable& table = state.table;
    const Source source = openFirstFile(); // which finds the name
    std::string text;
    if (!readAll(source, state.name, text)) {
        reportNoFile();
        return;
    }
    std::vector<KazString> names{state.name};
    table.defineAll(std::move(text), names.front(), true);
    table.define("TI_locale", locale.getValue(), true);
    followChain(table, names);
    table.define("ToolInfo", names.front().getValue(), true);
    table.define("ToolInfoPath", joined(names).getValue(), true);
    state.chain = std::move(names);
    TI_Vr_done();
}

} // namespace

namespace kaz::detail {

ToolInfoState& ToolInfoState::instance() {
    static ToolInfoState& state = *new ToolInfoState;
    return state;
}

bool readToolInfoFile(const char* path, bool overwrite) {
    const KazString name = kazNormalizedPath(path);
    std::string text;
    if (!readAll(openFile(path), name, text))
        return false;
    ToolInfoState::instance().table.defineAll(std::move(text), name, overwrite);
    return true;
}

} // namespace kaz::detail

int TI_Vinit() {
    bool& initialised = ToolInfoState::instance().initialised;
    if (initialised)
        return 0;
    // Set before the reading: a director may look a variable up while it shows
    // the fatal error. When something is thrown, the next lookup tries again.
    initialised = true;
    try {
        readFiles();
    } catch (...) {
        initialised = false;
        throw;
    }
    return 0;
}

bool TI_V_set_overwrite(bool overwrite) {
    return std::exchange(ToolInfoState::instance().overwrite, overwrite);
}

std::FILE* _TI_Cfile() {
    return openFirstFile().stream.release();
}

int TI_Name(char* out) {
    const KazString& name = rememberedName();
    if (out == nullptr || !name)
        return -1;
    const std::size_t length =
        std::min(static_cast<std::size_t>(name.getLength()), kaz::host::pathLimit() - 1);
    std::memcpy(out, name.getValue(), length);
    out[length] = '\0';
    return 0;
}

void TI_Vr_done() {
    kaz::host::FileStatus status;
    kaz::host::status(rememberedName(), status);
    ToolInfoState::instance().recordedTime = static_cast<std::time_t>(status.modified);
}

std::time_t TI_Vr_time() {
    return ToolInfoState::instance().recordedTime;
}

KazString TI_Vfile(int index) {
    TI_Vinit();
    const std::vector<KazString>& names = ToolInfoState::instance().chain;
    const auto at = static_cast<std::size_t>(index);
    return index >= 0 && at < names.size() ? names[at] : KazString();
}
