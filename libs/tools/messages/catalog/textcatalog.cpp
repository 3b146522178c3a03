// SPDX-License-Identifier: Apache-2.0
// The catalog behind these functions is one object that is there before main and after it.
// The older functions treat a missing ToolInfo file as fatal, as they always did; kaz_text,
// with a text at hand, must work without one, and so marks its lookups.
//
// A text from the file reaches printf with arguments that the program chose. It is taken
// only if it asks for the same ones as the English text; once handed out, it stays.
#include "tools/messages/catalog/textcatalog.h"

#include "tools/files/home.h"
#include "tools/files/kazpath.h"
#include "tools/files/tifiles.h"
#include "tools/formats/encode.h"
#include "tools/messages/catalog/detail/MessageCatalog.h"
#include "tools/messages/messages.h"
#include "tools/messages/trace.h"
#include "tools/platform/host.h"
#include "tools/strings/printf_arguments.h"
#include "tools/util/detail/or_empty.h"
#include "tools/util/detail/site_setting.h"
#include "tools/util/text.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>

using kaz::detail::orEmpty;
using kaz::detail::requiredSetting;
using kaz::detail::siteSetting;

namespace {

/// kaz_text does without a ToolInfo file; for the others its absence is a fatal error.
constinit bool mayLackToolInfo = false;

const char* configuredName() {
    return mayLackToolInfo ? siteSetting("msg_file") : requiredSetting("msg_file");
}

kaz::host::ReadableFile openMessageFile(KazString& name) {
    const char* configured = configuredName();
    if (configured != nullptr && *configured != '\0')
        name = configured;
    else
        name = kazComposePath(TI_myRootDir(), "bin\\W32NTX86\\msg_file");
    kaz::host::ReadableFile file(name);
    if (file.isOpen())
        KAZ_TRACE("messages", "message file %s", name.getValue());
    else
        KAZ_TRACE("messages", "message file %s not opened: %s", name.getValue(),
                  kaz::host::errorText(errno).c_str());
    return file;
}

/// Static objects may ask for a text before and after main: the catalog is there
/// from the start and is never destroyed.
union Lasting {
    constexpr Lasting() : catalog(openMessageFile) {}
    ~Lasting() {} // NOLINT(modernize-use-equals-default): that would be a deleted one
    kaz::detail::MessageCatalog catalog;
};

constinit Lasting lasting;
constexpr kaz::detail::MessageCatalog& catalog = lasting.catalog;

/// TextLook would report the absence of a message file with each text.
bool hasMessageFile() {
    static bool isLookedFor = false, isThere = false;
    if (isLookedFor)
        return isThere;
    KazString name;
    isThere = openMessageFile(name).isOpen();
    isLookedFor = true; // also for a director that asks for texts of its own
    if (!isThere && configuredName() != nullptr)
        print_err("Cannot read the message file '%s'", kazPrintable(name).getValue());
    return isThere;
}

class WithoutToolInfo {
public:
    WithoutToolInfo() : before_(std::exchange(mayLackToolInfo, true)) {}
    ~WithoutToolInfo() { mayLackToolInfo = before_; }
    WithoutToolInfo(const WithoutToolInfo&) = delete;
    WithoutToolInfo& operator=(const WithoutToolInfo&) = delete;

private:
    bool before_;
};

/// Whatever the file holds, its text must be safe with the arguments given.
const char* chosenText(int number, const char* english) {
    const WithoutToolInfo here;
    const char* text = hasMessageFile() ? TextLook(number) : "";
    const bool isGood = *text != '\0' && kazPrintfArguments(text) == kazPrintfArguments(english);
    return isGood ? text : english;
}

const char* lastingText(int number, const char* english) {
    using Texts = std::map<std::string, std::string, std::less<>>;
    static auto& given = *new std::map<int, Texts>; // never destroyed: handed out to the very end
    Texts& texts = given[number];
    // One number may be asked for with several English texts, each with arguments of its own; so
    // the answer belongs to both.
    auto found = texts.find(std::string_view(english));
    if (found == texts.end())
        found = texts.emplace(english, chosenText(number, english)).first;
    return found->second.c_str();
}

/// An empty text is a beginning, too; callers have ruled it out.
bool isBeginningOf(const char* text, const char* word) {
    return std::strncmp(text, word, std::strlen(text)) == 0;
}

} // namespace

char* TextLook(int number) {
    return catalog.look(number);
}

char* CTextLook(int number) {
    return mkcpy(TextLook(number));
}

/// The look-up reads files and may trace; errno is what the caller wants to be told.
void Textperror(int number) {
    const int reason = errno;
    const char* text = TextLook(number);
    errno = reason;
    std::perror(text);
}

const char* kaz_text(int number, const char* english) {
    const int reason = errno;
    const char* text = lastingText(number, orEmpty(english));
    errno = reason;
    return text;
}

int TI_TextPutNo(char* text, int number) {
    return catalog.put(orEmpty(text), number);
}

int TI_TextPut(char* text) {
    return catalog.put(orEmpty(text));
}

void TextStats() {
    const char* wanted = requiredSetting("TextStats");
    if (wanted == nullptr || *wanted == '\0' || std::strcmp(wanted, "n") == 0)
        return;
    if (isBeginningOf(wanted, "yes") || isBeginningOf(wanted, "stderr")) {
        catalog.printStatistics(stderr);
        return;
    }
    // Any other value names a file. One that cannot be opened is passed over: statistics are no
    // reason to disturb a tool at its end.
    std::FILE* out = TI_fopen(wanted, "a");
    if (out == nullptr)
        return;
    catalog.printStatistics(out);
    std::fclose(out);
}
