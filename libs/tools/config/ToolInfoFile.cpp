// SPDX-License-Identifier: Apache-2.0
// The name of the first file is remembered from the first search on: what the search found,
// or what the environment asks for, even if that does not open. The chain behind it is read
// into one table in which an earlier file wins; only within the first file does a later
// line win. A reading that runs out of memory counts as none, and the next lookup tries
// again.
#include "tools/config/detail/ToolInfoChain.h"
#include "tools/config/detail/ToolInfoState.h"
#include "tools/config/detail/quoted_name.h"
#include "tools/config/toolinfo.h"
#include "tools/files/kazpath.h"
#include "tools/messages/messages.h"
#include "tools/platform/host.h"

#include <algorithm>
#include <clocale>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace {

using kaz::detail::openToolInfo;
using kaz::detail::quotedName;
using kaz::detail::readToolInfo;
using kaz::detail::resolvedToolInfo;
using kaz::detail::ToolInfoSource;
using kaz::detail::ToolInfoState;
using kaz::detail::ToolInfoTable;

KazString& rememberedName() {
    return ToolInfoState::instance().name;
}

/// Opens @p name and remembers it when that works.
ToolInfoSource openAndRemember(const KazString& name) {
    ToolInfoSource source = openToolInfo(name);
    if (source)
        rememberedName() = name;
    return source;
}

ToolInfoSource openDefaultFile() {
    ToolInfoSource source = openAndRemember(kazNormalizedPath(_TI_hm("~\\ToolInfo")));
    // The platform's own file hides the general one.
    for (const char* name : {"ToolInfo.W32NTX86", "ToolInfo"}) {
        if (source)
            break;
        source = openAndRemember(kazComposePath(TI_myRootDir(), name));
    }
    return source;
}

ToolInfoSource openFirstFile() {
    if (rememberedName())
        // One that has vanished meanwhile is searched for anew.
        if (ToolInfoSource source = openToolInfo(rememberedName()))
            return source;
    // The first that is set decides, whether its file opens or not.
    for (const char* variable : {"ToolInfo", "TOOLINFO"}) {
        if (const char* value = kaz::host::environment(variable)) {
            // Remembered even if it does not open: it is what the user asked for.
            rememberedName() = resolvedToolInfo(value);
            return openToolInfo(rememberedName());
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

/// Reads into the table, where earlier definitions win.
class TableReader final : public kaz::detail::ToolInfoReader {
public:
    explicit TableReader(ToolInfoTable& table) : table_(table) {}

    const char* next() const override { return table_.find("ToolInfo"); }
    void read(std::string text, const KazString& file) override {
        // Or the link that led here would lead on: earlier definitions win in this table.
        table_.remove("ToolInfo");
        table_.defineAll(std::move(text), file, false);
    }

private:
    ToolInfoTable& table_;
};

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
    // Before the files are read: what they hold is classified by the user's locale.
    const KazString locale = localeInForce();
    ToolInfoState& state = ToolInfoState::instance();
    ToolInfoTable& table = state.table;
    const ToolInfoSource source = openFirstFile(); // which finds the name
    std::string text;
    if (!readToolInfo(source, state.name, text)) {
        reportNoFile();
        return;
    }
    std::vector<KazString> names{state.name};
    // Defined before the first lookup, by the tool; the scan has to start from the same link.
    KazString linkBefore = table.find("ToolInfo");
    table.defineAll(std::move(text), names.front(), true);
    // After the first file and over it, but before the chain, where earlier ones win.
    table.define("TI_locale", locale.getValue(), true);
    TableReader reader(table);
    KazString stop;
    kaz::detail::followChain(reader, names, stop);
    // The last link is overwritten: who asks wants the file that the chain began with.
    table.define("ToolInfo", names.front().getValue(), true);
    table.define("ToolInfoPath", joined(names).getValue(), true);
    // Only now: a reading that throws leaves the chain of before.
    state.chain = std::move(names);
    state.linkBefore = std::move(linkBefore);
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
    if (!readToolInfo(openToolInfo(path), name, text))
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
    // Cut and terminated: callers provide the host's limit and no size.
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
