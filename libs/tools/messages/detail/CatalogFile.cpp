#include "tools/messages/detail/CatalogFile.h"

#include "tools/files/detail/open_file.h"
#include "tools/messages/messages.h"

#include <cstdlib>

namespace kaz::detail {

using namespace catalog;

CatalogFile::~CatalogFile() {
    if (stream)
        std::fclose(stream);
    for (Table* table : tables)
        std::free(table);
}

bool CatalogFile::open(std::FILE* file) {
    stream = file;
    // A record is read whole or not at all: a buffer would only read more than that.
    std::setvbuf(stream, nullptr, _IONBF, 0);
    return readAt(0, header, headerSize) == headerSize && longAt(header) == magic;
}

/// Reads @p size bytes; fewer at the end of the file or after a failure.
std::size_t CatalogFile::readAt(long offset, void* to, std::size_t size) {
    return std::fseek(stream, offset, SEEK_SET) == 0 ? readFully(stream, to, size) : 0;
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
    const std::size_t size = readAt(position * unit, bytes, tableSize);
    for (std::size_t i = 0; i < table->size(); ++i)
        (*table)[i] = wordAt(bytes + 2 * i);
    return size == tableSize ? table : nullptr;
}

bool CatalogFile::readText(std::uint16_t position, char* text) {
    return readAt(position * unit, text, recordSize) == recordSize;
}

} // namespace kaz::detail
