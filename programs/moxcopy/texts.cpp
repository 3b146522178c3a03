// SPDX-License-Identifier: Apache-2.0
#include "texts.h"

#include "common/formats.h"
#include "names.h"
#include "tools/config/toolinfo.h"
#include "tools/files/kazpath.h"
#include "tools/files/tifiles.h"
#include "tools/files/tistatus.h"
#include "tools/messages/catalog/textcatalog.h"
#include "tools/messages/messages.h"

#include <cstdio>
#include <map>
#include <memory>
#include <string>

namespace {

/// Message files refer to the numbers: they stay with their texts for good.
constexpr struct {
    int number;
    const char* english;
} table[] = {
    {200, texts::copying},
    {201, texts::copied},
    {202, texts::plan},
    {203, texts::summary},
    {204, texts::oneFile},
    {205, texts::moreFiles},
    {206, texts::oneDirectory},
    {207, texts::moreDirectories},
    {208, texts::oneFailure},
    {209, texts::moreFailures},
    {210, texts::overwrite},
    {211, texts::leftAlone},
    {212, texts::cancelled},
    {213, texts::diskFull},
    {214, texts::nothing},
    {215, texts::noSystem},
    {216, texts::inOneAnother},
    {217, texts::inTheWay},
    {218, texts::cannotWrite},
    {219, texts::cannotRemove},
    {220, texts::notCopied},
    {221, texts::unreadable},
    {222, texts::noDiagram},
    {223, texts::backslash},
    {224, texts::badSystem},
    {225, texts::noProject},
    {226, texts::noTarget},
    {227, texts::badFilter},
    {228, texts::noProjectDirectory},
    {229, texts::isLink},
    {230, texts::outputLost},
    {231, texts::furtherFailures},
    {232, texts::keptFile},
    {233, texts::keptFiles},
};

using Stream = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

/// A pipe is not even tried: opening it could wait for ever.
bool opens(const KazString& file) {
    return TI_isFile(file) && Stream(TI_fopen(file, "rb"), std::fclose) != nullptr;
}

/// Variables can be looked up without a fatal error only when there is a
/// ToolInfo file; this tool does without one where it can.
const char* configuredFile() {
    return hasConfiguration() ? TI_Vcont("msg_file") : nullptr;
}

/// Is there a message file? TextLook would report its absence with each text.
bool hasMessageFile() {
    if (const char* configured = configuredFile()) {
        if (opens(configured))
            return true;
        print_err("Cannot read the message file '%s'", kazPrintable(configured).getValue());
        return false;
    }
    return opens(kazComposePath(TI_myRootDir(), "bin\\W32NTX86\\msg_file"));
}

/// Whatever the file holds, its text must be safe with the arguments given.
const char* lookUp(int number, const char* english) {
    const char* text = TextLook(number);
    return *text != '\0' && printfArguments(text) == printfArguments(english) ? text : english;
}

std::map<const char*, std::string> allTexts() {
    std::map<const char*, std::string> result;
    const bool look = hasMessageFile();
    for (const auto& row : table)
        result[row.english] = look ? lookUp(row.number, row.english) : row.english;
    return result;
}

} // namespace

const char* localText(const char* english) {
    static const std::map<const char*, std::string> texts = allTexts();
    const auto found = texts.find(english);
    return found != texts.end() ? found->second.c_str() : english;
}

bool hasConfiguration() {
    return Stream(_TI_Cfile(), std::fclose) != nullptr;
}
