#include "tools/messages/textcatalog.h"

#include "tools/config/toolinfo.h"
#include "tools/files/detail/open_file.h"
#include "tools/files/kazpath.h"
#include "tools/files/tifiles.h"
#include "tools/messages/detail/catalog_layout.h"
#include "tools/messages/messages.h"
#include "tools/util/text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>

// Memory comes from the plain C functions here: running out of it is one of the
// ordinary reasons for having no text, and is reported as such.

namespace {

using namespace kaz::detail::catalog;

using Table = std::array<std::uint16_t, entryCount>;

struct CacheEntry {
    std::uint32_t stamp;
    std::int32_t number;       // 0 while unused
    char text[recordSize + 1]; // the last one stays 0: a text may fill its record
    std::uint32_t uses;
};

struct RuntimeText {
    std::int32_t number;
    char* text;
    RuntimeText* next;
};

constexpr int cacheSize = 20;
constexpr int firstRuntimeNumber = blockCount * entryCount;

struct Catalog {
    std::FILE* file;
    unsigned char header[headerSize];
    Table* tables[blockCount];
    CacheEntry* cache; // cacheSize entries
    std::uint32_t clock;
    std::int32_t calls;
    std::int32_t hits;
    std::int32_t misses;
    std::int32_t errors;
    RuntimeText* runtimeTexts;
    std::int32_t lastRuntimeNumber;
    std::int32_t runtimeUsed;
};

constinit Catalog catalog{.file = nullptr,
                          .header = {},
                          .tables = {},
                          .cache = nullptr,
                          .clock = 1,
                          .calls = 0,
                          .hits = 0,
                          .misses = 0,
                          .errors = 0,
                          .runtimeTexts = nullptr,
                          .lastRuntimeNumber = 0,
                          .runtimeUsed = 0};

constinit char noText[1] = "";

KazString messageFileName() {
    const char* configured = TI_Vcont("msg_file");
    if (configured && *configured)
        return configured;
    return kazComposePath(TI_myRootDir(), "bin\\W32NTX86\\msg_file");
}

bool makeCache() {
    if (!catalog.cache)
        catalog.cache = static_cast<CacheEntry*>(std::calloc(cacheSize, sizeof(CacheEntry)));
    if (!catalog.cache)
        print_err("Memory allocation for messages failed");
    return catalog.cache != nullptr;
}

/// A file with the wrong magic number is refused, but stays open: later lookups
/// do not come here again and read from it.
bool openMessageFile() {
    if (!makeCache())
        return false;
    const KazString name = messageFileName();
    catalog.file = kaz::detail::openRegularFile(name, "rb");
    if (!catalog.file)
        return false;
    const std::size_t got = std::fread(catalog.header, 1, headerSize, catalog.file);
    if (got == headerSize && longAt(catalog.header) == magic)
        return true;
    print_err("Warning: Magic number mismatch msg file %s", name.getValue());
    return false;
}

void stamp(CacheEntry& entry) {
    entry.stamp = catalog.clock++;
}

const RuntimeText* findRuntimeText(int number) {
    const RuntimeText* node = catalog.runtimeTexts;
    while (node && node->number != number)
        node = node->next;
    return node;
}

char* showRuntimeText(int number, CacheEntry& victim) {
    const RuntimeText* found = findRuntimeText(number);
    if (!found)
        return nullptr;
    const std::size_t length = std::min(std::strlen(found->text), recordSize);
    std::memcpy(victim.text, found->text, length);
    // At full length the terminator is the entry's own, right behind the text.
    std::fill(victim.text + length, victim.text + recordSize, '\0');
    stamp(victim);
    victim.number = number;
    return victim.text;
}

bool seekUnit(std::uint16_t position) {
    return std::fseek(catalog.file, position * unit, SEEK_SET) == 0;
}

/// Whatever becomes of it, a table stays in its slot, so that a damaged block
/// is not read again with each lookup.
bool loadTable(int block) {
    if (block < 0 || block >= blockCount)
        return false;
    if (catalog.tables[block])
        return true;
    auto* table = static_cast<Table*>(std::calloc(1, sizeof(Table)));
    if (!table) {
        print_err("Memory allocation for message index block %d failed", block);
        return false;
    }
    catalog.tables[block] = table;
    const std::uint16_t position = wordAt(catalog.header + 4 + 2 * block);
    if (position == 0 || !seekUnit(position))
        return false;
    unsigned char bytes[tableSize] = {};
    const std::size_t got = std::fread(bytes, 1, tableSize, catalog.file);
    for (std::size_t i = 0; i < table->size(); ++i)
        (*table)[i] = wordAt(bytes + 2 * i);
    return got == tableSize;
}

char* readText(int number, CacheEntry& victim) {
    const int block = number >> 8;
    if (!loadTable(block))
        return noText;
    const std::uint16_t position = (*catalog.tables[block])[static_cast<unsigned>(number) & 0xFF];
    if (position == 0)
        return noText;
    if (!seekUnit(position) || std::fread(victim.text, 1, recordSize, catalog.file) < recordSize) {
        ++catalog.errors;
        return noText;
    }
    ++catalog.misses;
    victim.uses = 0;
    stamp(victim);
    victim.number = number;
    victim.text[recordSize] = 0;
    return victim.text;
}

/// The entry that holds @p number, or null and in @p victim the one to replace
/// (null when the clock has wrapped).
CacheEntry* searchCache(int number, CacheEntry*& victim) {
    std::uint32_t lowest = catalog.clock;
    victim = nullptr;
    for (int i = 0; i < cacheSize; ++i) {
        CacheEntry& entry = catalog.cache[i];
        if (entry.number == number)
            return &entry;
        if (entry.stamp < lowest) {
            lowest = entry.stamp;
            victim = &entry;
        }
    }
    return nullptr;
}

} // namespace

char* TextLook(int number) {
    ++catalog.calls;
    if (!catalog.file && !openMessageFile()) {
        print_err("Could not initialize text from file");
        return noText;
    }
    CacheEntry* victim = nullptr;
    if (CacheEntry* hit = searchCache(number, victim)) {
        ++catalog.hits;
        ++hit->uses;
        stamp(*hit);
        return hit->text;
    }
    if (!victim) {
        ++catalog.errors;
        return noText;
    }
    const int block = number >> 8;
    const bool onlyRuntime = block < 0 || block > blockCount;
    if (onlyRuntime || catalog.runtimeUsed != 0) {
        char* text = showRuntimeText(number, *victim);
        if (text || onlyRuntime)
            return text ? text : noText;
    }
    return readText(number, *victim);
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
    std::unique_ptr<char, decltype(&std::free)> copy(mkcpy(text ? text : ""), &std::free);
    for (RuntimeText* node = catalog.runtimeTexts; node; node = node->next) {
        if (node->number == number) {
            std::free(node->text);
            node->text = copy.release();
            return number;
        }
    }
    auto* node = static_cast<RuntimeText*>(std::calloc(1, sizeof(RuntimeText)));
    if (!node)
        return 0;
    *node = {number, copy.release(), catalog.runtimeTexts};
    catalog.runtimeTexts = node;
    return number;
}

int TI_TextPut(char* text) {
    if (catalog.lastRuntimeNumber == 0) {
        catalog.lastRuntimeNumber = firstRuntimeNumber;
        catalog.runtimeUsed = firstRuntimeNumber;
    }
    return TI_TextPutNo(text, ++catalog.lastRuntimeNumber);
}

namespace {

/// An empty text is a beginning, too; callers have ruled it out.
bool isBeginningOf(const char* text, const char* word) {
    return std::strncmp(text, word, std::strlen(text)) == 0;
}

void printTables(std::FILE* out) {
    int used = 0;
    for (const Table* table : catalog.tables)
        used += table != nullptr;
    std::fprintf(out, "\nBucket tables %d entries used\n", used);
    if (used == 0)
        return;
    for (int block = 0; block < blockCount; ++block) {
        if (catalog.tables[block])
            std::fprintf(out, "%2d ", block);
    }
    std::fputc('\n', out);
}

void printCounts(std::FILE* out) {
    std::fprintf(out, "\nCurrent LRU %lu\n", static_cast<unsigned long>(catalog.clock));
    std::fprintf(out, "Calls %ld\n", static_cast<long>(catalog.calls));
    if (catalog.calls == 0)
        return;
    const auto share = [](std::int32_t count) { return count * 100.0 / catalog.calls; };
    std::fprintf(out, "\tText Hit  %6ld(%6.2f%%)\n", static_cast<long>(catalog.hits),
                 share(catalog.hits));
    std::fprintf(out, "\tText Miss %6ld(%6.2f%%)\n", static_cast<long>(catalog.misses),
                 share(catalog.misses));
    std::fprintf(out, "\tText Err  %6ld(%6.2f%%)\n", static_cast<long>(catalog.errors),
                 share(catalog.errors));
}

void printBeginning(std::FILE* out, const char* text) {
    constexpr int most = 20;
    for (int i = 0; i < most && text[i]; ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (std::isprint(c))
            std::fputc(c, out);
        else
            std::fprintf(out, "^%c", c + 64);
    }
}

void printCache(std::FILE* out) {
    for (int i = 0; i < cacheSize; ++i) {
        const CacheEntry& entry = catalog.cache[i];
        std::fprintf(out, "Entry %2d, Tno %5d, Lru %5d, Text ", i, entry.number,
                     static_cast<int>(entry.stamp));
        if (entry.number == 0) {
            std::fputs("UNUSED\n", out);
            continue;
        }
        printBeginning(out, entry.text);
        std::fputc('\n', out);
    }
}

void printStatistics(std::FILE* out) {
    if (!catalog.cache) {
        std::fputs("Text tables not initialized\n", out);
        return;
    }
    printTables(out);
    printCounts(out);
    std::fputc('\n', out);
    printCache(out);
    std::fputc('\n', out);
}

} // namespace

void TextStats() {
    const char* wanted = TI_Vcont("TextStats");
    if (!wanted || !*wanted || std::strcmp(wanted, "n") == 0)
        return;
    if (isBeginningOf(wanted, "yes") || isBeginningOf(wanted, "stderr")) {
        printStatistics(stderr);
        return;
    }
    std::FILE* out = TI_fopen(wanted, "a");
    if (!out)
        return;
    printStatistics(out);
    std::fclose(out);
}
