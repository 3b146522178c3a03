// SPDX-License-Identifier: Apache-2.0
/// @file
/// Numbered texts: those of a message file, through a cache, and those that were
/// registered.
#pragma once

#include "tools/messages/catalog/detail/CatalogFile.h"
#include "tools/strings/KazString.h"
#include "tools/util/detail/heap_ptr.h"

#include <cstdint>
#include <cstdio>

namespace kaz::detail {

/// What TextLook and its relatives work on; see textcatalog.h.
class MessageCatalog {
public:
    /// Opens the message file and tells its name; not open when there is none.
    using Opener = host::ReadableFile (*)(KazString& name);

    /// Uses of cache entries are numbered from @p firstStamp on.
    constexpr explicit MessageCatalog(Opener opener, std::uint32_t firstStamp = 1)
        : openFile_(opener), clock_(firstStamp) {}
    ~MessageCatalog();
    MessageCatalog(const MessageCatalog&) = delete;
    MessageCatalog& operator=(const MessageCatalog&) = delete;

    /// Never null. Valid until a later lookup needs the entry.
    char* look(int number);

    /// Registers a copy of @p text. 0 when there is no memory for it.
    int put(const char* text, int number);
    /// The same under the next free number.
    int put(const char* text);

    void printStatistics(std::FILE* out) const;

private:
    struct Cache;
    struct RuntimeText;

    bool start();
    bool makeCache();
    char* show(int entry, int number);
    RuntimeText* findRuntimeText(int number) const;
    void index(RuntimeText* node);
    bool makeIndexRoom();
    bool copyRuntimeText(int number, int entry);
    bool readText(int number, int entry);

    void printTables(std::FILE* out) const;
    void printCounts(std::FILE* out) const;
    void printCache(std::FILE* out) const;

    Opener openFile_;
    CatalogFile file_;
    HeapPtr<Cache> cache_;
    std::uint32_t clock_;
    std::uint32_t calls_ = 0;
    std::uint32_t hits_ = 0;
    std::uint32_t misses_ = 0;
    std::uint32_t errors_ = 0;
    RuntimeText* runtimeTexts_ = nullptr; ///< owned, newest first
    HeapPtr<RuntimeText*> byNumber_;      ///< those that TI_TextPut has numbered, in order
    std::int32_t indexed_ = 0;
    std::int32_t indexRoom_ = 0;
    bool isAllIndexed_ = true; ///< no text has another number
    std::int32_t lastRuntimeNumber_ = 0;
    bool runtimeUsed_ = false;
};

} // namespace kaz::detail
