#include "tools/messages/detail/CatalogFile.h"

#include "tools/files/detail/open_file.h"
#include "tools/messages/messages.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace kaz::detail {

using namespace catalog;

/// A part of the file. Its last records reach beyond the page proper, so each lies
/// in one page as a whole.
struct CatalogFile::Page {
    static constexpr std::size_t size = unitsPerPage * unit;

    std::size_t length; ///< less than there is room for at the end of the file
    char bytes[size + recordSize - unit];
};

CatalogFile::~CatalogFile() {
    if (stream)
        std::fclose(stream);
    for (Table* table : tables)
        std::free(table);
    for (Page* page : pages)
        std::free(page);
}

bool CatalogFile::open(std::FILE* file) {
    stream = file;
    // Pages are all the buffer that is needed.
    std::setvbuf(stream, nullptr, _IONBF, 0);
    return readAt(0, header, headerSize).size == headerSize && longAt(header) == magic;
}

/// Reads @p size bytes; fewer at the end of the file or after a failure.
CatalogFile::Read CatalogFile::readAt(long offset, void* to, std::size_t size) {
    Read read{0, true};
    if (std::fseek(stream, offset, SEEK_SET) != 0)
        return read;
    read.size = readFully(stream, to, size);
    read.failed = std::ferror(stream) != 0;
    return read;
}

const CatalogFile::Table* CatalogFile::findTable(int block) {
    if (block < 0 || block >= blockCount)
        return nullptr;
    if (tables[block])
        return tables[block];
    auto* table = static_cast<Table*>(std::calloc(1, sizeof(Table)));
    if (!table) {
        print_err("Memory allocation for message index block %d failed", block);
        return nullptr;
    }
    tables[block] = table;
    const std::uint16_t position = wordAt(header + 4 + 2 * block);
    if (position == 0)
        return nullptr;
    unsigned char bytes[tableSize] = {};
    const Read read = readAt(position * unit, bytes, tableSize);
    for (std::size_t i = 0; i < table->size(); ++i)
        (*table)[i] = wordAt(bytes + 2 * i);
    return read.size == tableSize ? table : nullptr;
}

/// Null when there is no memory for it, or when it cannot be read: then the next
/// lookup tries again.
CatalogFile::Page* CatalogFile::loadPage(std::size_t number) {
    auto* page = static_cast<Page*>(std::malloc(sizeof(Page)));
    if (!page)
        return nullptr;
    const auto offset = static_cast<long>(number * Page::size);
    const Read read = readAt(offset, page->bytes, sizeof page->bytes);
    if (read.failed) {
        std::free(page);
        return nullptr;
    }
    page->length = read.size;
    return pages[number] = page;
}

bool CatalogFile::readText(std::uint16_t position, char* text) {
    const std::size_t number = position / unitsPerPage;
    const Page* page = pages[number] ? pages[number] : loadPage(number);
    if (!page)
        return readAt(position * unit, text, recordSize).size == recordSize;
    const std::size_t offset = position % unitsPerPage * unit;
    const char* record = page->bytes + offset;
    if (page->length >= offset + recordSize) {
        std::memcpy(text, record, recordSize);
        return true;
    }
    if (page->length > offset)
        std::memcpy(text, record, page->length - offset);
    return false;
}

} // namespace kaz::detail
