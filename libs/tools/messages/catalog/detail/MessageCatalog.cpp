// SPDX-License-Identifier: Apache-2.0
// A text is looked for in the cache, then among the registered ones, then in the file. Callers
// get pointers into the cache alone: a pointer is good until another text needs its entry, and
// whoever keeps a text longer copies it.
#include "tools/messages/catalog/detail/MessageCatalog.h"

#include "tools/formats/encode.h"
#include "tools/messages/messages.h"
#include "tools/messages/trace.h"
#include "tools/util/text.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

// Memory comes from the plain C functions here: running out of it is one of the
// ordinary reasons for having no text, and is reported as such.

namespace kaz::detail {

using namespace catalog;

namespace {

constexpr int cacheSize = 20;
constexpr int none = -1;
constexpr int firstRuntimeNumber = blockCount * entryCount;

constinit char noText[1] = "";

} // namespace

/// The entries by field: a search reads five cache lines and not twenty.
struct MessageCatalog::Cache {
    std::int32_t numbers[cacheSize]; ///< 0 while unused
    std::uint32_t stamps[cacheSize];
    std::uint32_t uses[cacheSize];
    char texts[cacheSize][recordSize + 1]; ///< the last stays 0: a text may fill its record

    int find(int number) const {
        for (int i = 0; i < cacheSize; i += step)
            if (const int hit = findIn(numbers + i, number); hit != none)
                return i + hit;
        return none;
    }

    /// The entry that was used least recently, the first of equals; none when the
    /// clock has wrapped, so that no stamp is below it.
    int findVictim(std::uint32_t now) const {
        int victim = 0;
        for (int i = 0; i < cacheSize; i += step)
            if (const int oldest = i + oldestIn(stamps + i); stamps[oldest] < stamps[victim])
                victim = oldest;
        return stamps[victim] < now ? victim : none;
    }

private:
    /// Comparisons that do not wait for one another: a miss takes 13 instead of 22
    /// nanoseconds.
    static constexpr int step = 4;

    static int findIn(const std::int32_t* some, int number) {
        int found = none;
        for (int i = step - 1; i >= 0; --i)
            found = some[i] == number ? i : found;
        return found;
    }

    static int oldestIn(const std::uint32_t* some) {
        int oldest = 0;
        for (int i = 1; i < step; ++i)
            oldest = some[i] < some[oldest] ? i : oldest;
        return oldest;
    }
};

struct MessageCatalog::RuntimeText {
    std::int32_t number;
    HeapPtr<char> text;
    RuntimeText* next;
};

MessageCatalog::~MessageCatalog() {
    while (runtimeTexts_ != nullptr) {
        const HeapPtr<RuntimeText> node(runtimeTexts_);
        runtimeTexts_ = node->next;
        std::destroy_at(node.get());
    }
}

/// All zero is an empty cache; a number of 0 marks an entry that is unused.
bool MessageCatalog::makeCache() {
    if (cache_ == nullptr)
        cache_.reset(static_cast<Cache*>(std::calloc(1, sizeof(Cache))));
    if (cache_ == nullptr)
        print_err("Memory allocation for messages failed");
    return cache_ != nullptr;
}

/// A file with the wrong magic number is refused, but stays open: later lookups
/// do not come here again and read from it.
bool MessageCatalog::start() {
    if (!makeCache())
        return false;
    KazString name;
    host::ReadableFile found = openFile_(name);
    if (!found.isOpen())
        return false;
    if (file_.open(std::move(found)))
        return true;
    print_err("Warning: Magic number mismatch msg file %s",
              (host::isTerminal(stderr) ? kazPrintable(name) : name).getValue());
    return false;
}

char* MessageCatalog::look(int number) {
    ++calls_;
    if (!file_.isOpen() && !start()) {
        print_err("Could not initialize text from file");
        return noText;
    }
    if (const int hit = cache_->find(number); hit != none) {
        ++hits_;
        ++cache_->uses[hit];
        cache_->stamps[hit] = clock_++;
        return cache_->texts[hit];
    }
    // The entry is chosen before anybody knows whether there is such a text; it gets its new number
    // only with one.
    const int victim = cache_->findVictim(clock_);
    if (victim == none) {
        ++errors_;
        return noText;
    }
    const int block = number >> 8;
    // The block behind the last one passes for the file's as well, which has no table for it.
    const bool onlyRuntime = block < 0 || block > blockCount;
    if ((onlyRuntime || runtimeUsed_) && copyRuntimeText(number, victim))
        return show(victim, number);
    if (!onlyRuntime && readText(number, victim))
        return show(victim, number);
    return noText;
}

char* MessageCatalog::show(int entry, int number) {
    cache_->numbers[entry] = number;
    cache_->stamps[entry] = clock_++;
    return cache_->texts[entry];
}

bool MessageCatalog::copyRuntimeText(int number, int entry) {
    const RuntimeText* node = findRuntimeText(number);
    if (node == nullptr)
        return false;
    // At full length the terminator is the entry's own, right behind the text.
    std::strncpy(cache_->texts[entry], node->text.get(), recordSize);
    return true;
}

bool MessageCatalog::readText(int number, int entry) {
    const CatalogFile::Table* table = file_.findTable(number >> 8);
    const std::uint16_t position =
        table != nullptr ? (*table)[static_cast<unsigned>(number) % entryCount] : 0;
    if (position == 0) {
        KAZ_TRACE("messages", "text %d is not in the message file", number);
        return false;
    }
    if (!file_.readText(position, cache_->texts[entry])) {
        KAZ_TRACE("messages", "text %d is not whole in the message file", number);
        ++errors_;
        return false;
    }
    ++misses_;
    cache_->uses[entry] = 0;
    return true;
}

int MessageCatalog::put(const char* text, int number) {
    if (RuntimeText* known = findRuntimeText(number)) {
        // The copy first, so that without memory the old text stays. One that lies in the cache is
        // given out until it makes room there.
        known->text.reset(mkcpy(text));
        return number;
    }
    // The node first: no memory for it is a result, none for the text an exception.
    HeapPtr<void> block(std::malloc(sizeof(RuntimeText)));
    if (block == nullptr)
        return 0;
    HeapPtr<char> copy(mkcpy(text));
    runtimeTexts_ = new (block.release()) RuntimeText{number, std::move(copy), runtimeTexts_};
    index(runtimeTexts_);
    return number;
}

/// The list is a list for whoever walks it; the numbers that are given out in order
/// have an array beside it, and mostly there are no others.
MessageCatalog::RuntimeText* MessageCatalog::findRuntimeText(int number) const {
    const std::int64_t place = std::int64_t{number} - firstRuntimeNumber - 1;
    if (place >= 0 && place < indexed_)
        return byNumber_.get()[place];
    RuntimeText* node = isAllIndexed_ ? nullptr : runtimeTexts_;
    while (node != nullptr && node->number != number)
        node = node->next;
    return node;
}

/// Puts the next number in order into the array. Any other one, and those for which
/// there is no memory, are looked for in the list.
void MessageCatalog::index(RuntimeText* node) {
    if (node->number != firstRuntimeNumber + 1 + indexed_ || !makeIndexRoom()) {
        isAllIndexed_ = false;
        return;
    }
    byNumber_.get()[indexed_++] = node;
}

bool MessageCatalog::makeIndexRoom() {
    if (indexed_ < indexRoom_)
        return true;
    const std::int32_t room = std::max(2 * indexRoom_, 64);
    const std::size_t size = static_cast<std::size_t>(room) * sizeof(RuntimeText*);
    void* const larger = std::realloc(byNumber_.get(), size);
    if (larger == nullptr)
        return false;
    static_cast<void>(byNumber_.release()); // the block that has grown, or moved
    byNumber_.reset(static_cast<RuntimeText**>(larger));
    indexRoom_ = room;
    return true;
}

int MessageCatalog::put(const char* text) {
    if (!runtimeUsed_)
        lastRuntimeNumber_ = firstRuntimeNumber;
    runtimeUsed_ = true;
    return put(text, ++lastRuntimeNumber_);
}

namespace {

/// Statistics go to terminals and logs: nothing of a text is to be obeyed there.
void printBeginning(std::FILE* out, const char* text) {
    constexpr int most = 20;
    for (int i = 0; i < most && text[i] != '\0'; ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        // Some hosts count the tab among the printable characters.
        if (std::isprint(c) && !std::iscntrl(c))
            std::fputc(c, out);
        else
            std::fprintf(out, "^%c", c + 64);
    }
}

} // namespace

void MessageCatalog::printTables(std::FILE* out) const {
    int used = 0;
    for (int block = 0; block < blockCount; ++block)
        used += file_.holdsTable(block) ? 1 : 0;
    std::fprintf(out, "\nBucket tables %d entries used\n", used);
    if (used == 0)
        return;
    for (int block = 0; block < blockCount; ++block) {
        if (file_.holdsTable(block))
            std::fprintf(out, "%2d ", block);
    }
    std::fputc('\n', out);
}

void MessageCatalog::printCounts(std::FILE* out) const {
    std::fprintf(out, "\nCurrent LRU %lu\n", static_cast<unsigned long>(clock_));
    std::fprintf(out, "Calls %ld\n", static_cast<long>(calls_));
    // There was a call, or there would be no cache.
    const auto print = [&](const char* format, std::uint32_t count) {
        std::fprintf(out, format, static_cast<long>(count), count * 100.0 / calls_);
    };
    print("\tText Hit  %6ld(%6.2f%%)\n", hits_);
    print("\tText Miss %6ld(%6.2f%%)\n", misses_);
    print("\tText Err  %6ld(%6.2f%%)\n", errors_);
}

void MessageCatalog::printCache(std::FILE* out) const {
    for (int i = 0; i < cacheSize; ++i) {
        std::fprintf(out, "Entry %2d, Tno %5d, Lru %5d, Text ", i, cache_->numbers[i],
                     static_cast<int>(cache_->stamps[i]));
        if (cache_->numbers[i] == 0) {
            std::fputs("UNUSED\n", out);
            continue;
        }
        printBeginning(out, cache_->texts[i]);
        std::fputc('\n', out);
    }
}

void MessageCatalog::printStatistics(std::FILE* out) const {
    if (cache_ == nullptr) {
        std::fputs("Text tables not initialized\n", out);
        return;
    }
    printTables(out);
    printCounts(out);
    std::fputc('\n', out);
    printCache(out);
    std::fputc('\n', out);
}

} // namespace kaz::detail
