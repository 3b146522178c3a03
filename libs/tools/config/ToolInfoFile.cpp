#include "tools/app/exceptions/KazMemoryException.h"
#include "tools/config/detail/ToolInfoState.h"
#include "tools/config/toolinfo.h"
#include "tools/files/detail/open_file.h"
#include "tools/files/kazpath.h"
#include "tools/messages/messages.h"
#include "tools/platform/host.h"

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using kaz::detail::ToolInfoState;
using kaz::detail::ToolInfoTable;

constexpr std::size_t chainLimit = 10;

struct CloseStream {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, CloseStream>;

KazString& rememberedName() {
    return ToolInfoState::instance().name;
}

/// A file that there is no memory for does not count as missing: variables
/// would silently have other values.
Stream openFile(const char* path) {
    errno = 0;
    Stream stream(kaz::detail::openRegularFile(path, "r"));
    if (!stream && errno == ENOMEM)
        throw KazMemoryException();
    return stream;
}

/// Opens @p name and remembers it when that works.
Stream openAndRemember(const KazString& name) {
    Stream stream = openFile(name);
    if (stream)
        rememberedName() = name;
    return stream;
}

/// All of a file, in a block of its size, because the table keeps it. False when
/// there is no such file; one that cannot be read to its end is as good as none.
bool readAll(const Stream& stream, const char* name, std::string& text) {
    if (!stream)
        return false;
    kaz::host::FileStatus status;
    kaz::host::status(name, status);
    std::size_t size = 0;
    do {
        // One byte more shows the end of the file.
        text.resize(std::max(2 * size, static_cast<std::size_t>(status.size) + 1));
        size += kaz::detail::readFully(stream.get(), &text[size], text.size() - size);
    } while (size == text.size());
    text.resize(size);
    return std::ferror(stream.get()) == 0;
}

/// A file name as configuration spells it, made explicit and native.
KazString resolvedName(const char* value) {
    const KazString expanded = _TI_hm(value);
    return kazComposePath(TI_myRootDir(), expanded);
}

Stream openDefaultFile() {
    Stream stream = openAndRemember(kazNormalizedPath(_TI_hm("~\\ToolInfo")));
    for (const char* name : {"ToolInfo.W32NTX86", "ToolInfo"}) {
        if (stream)
            break;
        stream = openAndRemember(kazComposePath(TI_myRootDir(), name));
    }
    return stream;
}

Stream openFirstFile() {
    if (rememberedName())
        if (Stream stream = openFile(rememberedName()))
            return stream;
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
                  value);
    else
        fatal_err("ToolInfo environment variable is not set\n");
}

/// Character classification follows the user's locale from here on.
KazString localeInForce() {
    const char* name = std::setlocale(LC_CTYPE, "");
    return KazString(name != nullptr ? name : std::setlocale(LC_CTYPE, nullptr));
}

/// One file under two spellings is one file.
bool isSameFile(const KazString& a, const KazString& b) {
    return a == b || kazFullPath(a) == kazFullPath(b);
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
            return isSameFile(read, name);
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
    const Stream stream(_TI_Cfile());
    std::string text;
    if (!readAll(stream, state.name, text)) {
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
    return openFirstFile().release();
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
