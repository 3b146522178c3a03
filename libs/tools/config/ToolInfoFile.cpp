#include "tools/config/detail/ToolInfoFile.h"

#include "tools/config/detail/ToolInfoTable.h"
#include "tools/config/toolinfo.h"
#include "tools/files/detail/open_file.h"
#include "tools/files/kazpath.h"
#include "tools/messages/messages.h"
#include "tools/platform/host.h"

#include <algorithm>
#include <clocale>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using kaz::detail::ScopedOverwrite;
using kaz::detail::ToolInfoTable;

constexpr std::size_t chainLimit = 10;

constinit bool overwriteFlag = true;
constinit std::time_t recordedTime = 0;

struct CloseStream {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, CloseStream>;

KazString& rememberedName() {
    // Never destroyed, like the table of the variables.
    static KazString& name = *new KazString;
    return name;
}

std::vector<KazString>& chainNames() {
    static std::vector<KazString>& names = *new std::vector<KazString>;
    return names;
}

Stream openFile(const char* path) {
    return Stream(kaz::detail::openRegularFile(path, "r"));
}

/// Opens @p name and remembers it when that works.
Stream openAndRemember(const KazString& name) {
    Stream stream = openFile(name);
    if (stream)
        rememberedName() = name;
    return stream;
}

std::string readAll(std::FILE* stream) {
    std::string text;
    char piece[1 << 16];
    while (const std::size_t count = std::fread(piece, 1, sizeof piece, stream))
        text.append(piece, count);
    return text;
}

void readInto(ToolInfoTable& table, std::FILE* stream, const KazString& name) {
    const std::string text = readAll(stream);
    table.defineAll(kaz::detail::parseToolInfoText(text), name, overwriteFlag);
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
void followChain(ToolInfoTable& table, std::vector<KazString>& names) {
    KazString next;
    while (names.size() < chainLimit && table.find("ToolInfo", next) && next) {
        const KazString name = resolvedName(next);
        const bool known = std::any_of(names.begin(), names.end(), [&name](const KazString& read) {
            return isSameFile(read, name);
        });
        if (known)
            return;
        const Stream stream = openFile(name);
        if (!stream)
            return;
        table.remove("ToolInfo");
        readInto(table, stream.get(), name);
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
    Stream stream(_TI_Cfile());
    if (!stream) {
        reportNoFile();
        return;
    }
    ToolInfoTable& table = ToolInfoTable::instance();
    std::vector<KazString> names{rememberedName()};
    {
        const ScopedOverwrite laterWins(true);
        readInto(table, stream.get(), names.front());
    }
    table.define("TI_locale", locale, true);
    {
        const ScopedOverwrite earlierWins(false);
        followChain(table, names);
    }
    table.define("ToolInfo", names.front(), true);
    table.define("ToolInfoPath", joined(names), true);
    chainNames() = std::move(names);
    TI_Vr_done();
}

} // namespace

namespace kaz::detail {

bool overwrites() {
    return overwriteFlag;
}

bool readToolInfoFile(const char* path) {
    const Stream stream = openFile(path);
    if (stream)
        readInto(ToolInfoTable::instance(), stream.get(), kazNormalizedPath(path));
    return stream != nullptr;
}

} // namespace kaz::detail

int TI_Vinit() {
    static constinit bool initialised = false;
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
    return std::exchange(overwriteFlag, overwrite);
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
    recordedTime = static_cast<std::time_t>(status.modified);
}

std::time_t TI_Vr_time() {
    return recordedTime;
}

KazString TI_Vfile(int index) {
    TI_Vinit();
    const std::vector<KazString>& names = chainNames();
    const auto at = static_cast<std::size_t>(index);
    return index >= 0 && at < names.size() ? names[at] : KazString();
}
