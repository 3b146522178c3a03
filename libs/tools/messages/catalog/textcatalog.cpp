// SPDX-License-Identifier: Apache-2.0
#include "tools/messages/catalog/textcatalog.h"

#include "tools/config/toolinfo.h"
#include "tools/files/kazpath.h"
#include "tools/files/tifiles.h"
#include "tools/messages/catalog/detail/MessageCatalog.h"
#include "tools/messages/trace.h"
#include "tools/platform/host.h"
#include "tools/util/detail/or_empty.h"
#include "tools/util/text.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

using kaz::detail::orEmpty;

namespace {

kaz::host::ReadableFile openMessageFile(KazString& name) {
    const char* configured = TI_Vcont("msg_file");
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

void Textperror(int number) {
    const int reason = errno;
    const char* text = TextLook(number);
    errno = reason;
    std::perror(text);
}

int TI_TextPutNo(char* text, int number) {
    return catalog.put(orEmpty(text), number);
}

int TI_TextPut(char* text) {
    return catalog.put(orEmpty(text));
}

void TextStats() {
    const char* wanted = TI_Vcont("TextStats");
    if (wanted == nullptr || *wanted == '\0' || std::strcmp(wanted, "n") == 0)
        return;
    if (isBeginningOf(wanted, "yes") || isBeginningOf(wanted, "stderr")) {
        catalog.printStatistics(stderr);
        return;
    }
    std::FILE* out = TI_fopen(wanted, "a");
    if (out == nullptr)
        return;
    catalog.printStatistics(out);
    std::fclose(out);
}
