// SPDX-License-Identifier: Apache-2.0
// A message file may be damaged anywhere. So each number of it is only a place to read at, and a
// read that gives less than a whole record is a text that is not there; nothing is computed from
// what a file says but such places.
#include "tools/messages/catalog/detail/CatalogFile.h"

#include "tools/messages/messages.h"

#include <cstdlib>
#include <utility>

namespace kaz::detail {

using namespace catalog;

/// The file is kept also when it is refused; whoever looks next finds it open.
bool CatalogFile::open(host::ReadableFile from) {
    file_ = std::move(from);
    return file_.read(0, header_, headerSize) == headerSize && longAt(header_) == magic;
}

const CatalogFile::Table* CatalogFile::findTable(int block) {
    if (block < 0 || block >= blockCount)
        return nullptr;
    HeapPtr<Table>& table = tables_[block];
    if (table != nullptr)
        return table.get();
    // Kept for good, also without a place in the file: a table of zeroes has no texts, and the
    // header is asked only once a block.
    table.reset(static_cast<Table*>(std::calloc(1, sizeof(Table))));
    if (table == nullptr) {
        print_err("Memory allocation for message index block %d failed", block);
        return nullptr;
    }
    const std::uint16_t position = wordAt(header_ + 4 + 2 * block);
    if (position == 0)
        return nullptr;
    unsigned char bytes[tableSize] = {};
    // What a file that ends too early does not give is zero, and so no text.
    const std::size_t size = file_.read(position * unit, bytes, tableSize);
    for (std::size_t i = 0; i < table->size(); ++i)
        (*table)[i] = wordAt(bytes + 2 * i);
    return size == tableSize ? table.get() : nullptr;
}

bool CatalogFile::readText(std::uint16_t position, char* text) {
    return file_.read(position * unit, text, recordSize) == recordSize;
}

} // namespace kaz::detail
