// SPDX-License-Identifier: Apache-2.0
#include "texts.h"

#include "tools/config/toolinfo.h"
#include "tools/messages/catalog/textcatalog.h"

#include <cstdio>
#include <map>
#include <memory>

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

/// All of them at once: a lack of memory then shows at the first one, and not where a failure
/// is being told.
std::map<const char*, const char*> allTexts() {
    std::map<const char*, const char*> result;
    for (const auto& row : table)
        result[row.english] = kaz_text(row.number, row.english);
    return result;
}

} // namespace

const char* localText(const char* english) {
    static const std::map<const char*, const char*> texts = allTexts();
    const auto found = texts.find(english);
    return found != texts.end() ? found->second : english;
}

bool hasConfiguration() {
    return std::unique_ptr<std::FILE, int (*)(std::FILE*)>(_TI_Cfile(), std::fclose) != nullptr;
}
