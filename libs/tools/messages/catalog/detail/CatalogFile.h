// SPDX-License-Identifier: Apache-2.0
/// @file
/// A message file that is open for reading.
#pragma once

#include "tools/messages/catalog/detail/catalog_layout.h"
#include "tools/platform/host.h"
#include "tools/util/detail/heap_ptr.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace kaz::detail {

/// The header, index tables and texts of an open message file. Header and tables
/// are read once and kept; a text is read each time, as the file has it then, with
/// one system call.
/// Memory comes from the plain C functions: running out of it is one of the
/// ordinary reasons for having no text.
class CatalogFile {
public:
    /// Text positions of an index table, in units.
    using Table = std::array<std::uint16_t, catalog::entryCount>;

    /// Not open.
    constexpr CatalogFile() = default;

    bool isOpen() const { return file_.isOpen(); }

    /// Takes over an open file; only once. False when it does not begin as a
    /// message file; it is kept and read from all the same.
    bool open(host::ReadableFile from);

    /// The index table of @p block; null when there is none. Whatever becomes of
    /// the first attempt, a table stays in its slot, so that a damaged block is not
    /// read again with each lookup: later calls give what the first one got.
    const Table* findTable(int block);

    /// Does @p block have a table in its slot?
    bool holdsTable(int block) const { return tables_[block] != nullptr; }

    /// Reads the record at @p position into @p text. False when it is not all
    /// there; what there is of it has been read then.
    bool readText(std::uint16_t position, char* text);

private:
    host::ReadableFile file_;
    unsigned char header_[catalog::headerSize] = {};
    HeapPtr<Table> tables_[catalog::blockCount];
};

} // namespace kaz::detail
