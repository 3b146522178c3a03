// SPDX-License-Identifier: Apache-2.0
// The format addresses in units and reads each text as a record of fixed size, whatever its
// length. So records may overlap, and the file ends with room for the last one. Decoding goes on
// behind a damaged entry: each problem is told, and what is sound is taken.
#include "message_file.h"

#include "tools/messages/catalog/detail/catalog_layout.h"

#include <algorithm>

namespace {

using namespace kaz::detail::catalog;

// Offsets are words that count units; the last text that one can address is read whole.
constexpr std::size_t longestFile = lastOffset + recordSize;

std::size_t roundedUp(std::size_t size) {
    return (size + unit - 1) / unit * unit;
}

void putWord(std::string& bytes, std::size_t at, std::size_t value) {
    bytes[at] = static_cast<char>(value & 0xFF);
    bytes[at + 1] = static_cast<char>(value >> 8);
}

class Decoder {
public:
    Decoder(const std::string& file, Messages& result) : bytes_(file), messages_(result) {}

    void decode() {
        if (!isMessageFile(bytes_) || bytes_.size() < headerSize)
            return problem("is no message file");
        if (bytes_.size() > longestFile)
            problem("is longer than the " + std::to_string(longestFile) +
                    " bytes that can be addressed");
        for (int block = 0; block < blockCount; ++block)
            decodeBlock(block);
    }

private:
    void problem(const std::string& text) { messages_.addProblem(0, text); }

    /// The offset that the word at @p at stands for; 0 for none.
    std::size_t offsetAt(std::size_t at) const {
        return wordAt(reinterpret_cast<const unsigned char*>(bytes_.data()) + at) *
               static_cast<std::size_t>(unit);
    }

    bool isInside(std::size_t offset, std::size_t size) const {
        return offset <= bytes_.size() && bytes_.size() - offset >= size;
    }

    void decodeBlock(int block) {
        const std::size_t table = offsetAt(4 + 2 * static_cast<std::size_t>(block));
        if (table == 0)
            return;
        if (!isInside(table, tableSize))
            return problem("the index table of block " + std::to_string(block) +
                           " is outside the file");
        for (int entry = 0; entry < entryCount; ++entry)
            decodeText(block * entryCount + entry,
                       offsetAt(table + 2 * static_cast<std::size_t>(entry)));
    }

    void decodeText(int number, std::size_t offset) {
        if (offset == 0)
            return;
        if (!isInside(offset, recordSize))
            return problem("the text of " + std::to_string(number) + " is outside the file");
        std::string text = bytes_.substr(offset, recordSize);
        text.resize(std::min(text.find('\0'), text.size()));
        // Taken all the same, as the tools would show it.
        if (text.size() == recordSize)
            problem("the text of " + std::to_string(number) + " has no end");
        messages_.texts[number] = {text, 0};
    }

    const std::string& bytes_;
    Messages& messages_;
};

} // namespace

bool isMessageFile(const std::string& bytes) {
    return bytes.size() >= 4 &&
           longAt(reinterpret_cast<const unsigned char*>(bytes.data())) == magic;
}

void decodeMessageFile(const std::string& bytes, Messages& messages) {
    Decoder(bytes, messages).decode();
}

std::string encodeMessageFile(Messages& messages) {
    std::string bytes(headerSize, '\0');
    putWord(bytes, 0, magic & 0xFFFF);
    putWord(bytes, 2, magic >> 16);
    for (const auto& [number, message] : messages.texts) {
        const std::size_t slot = 4 + 2 * static_cast<std::size_t>(number / entryCount);
        // The block has its table already. Tables come before all texts, so that they stay
        // addressable.
        if (bytes[slot] != 0 || bytes[slot + 1] != 0)
            continue;
        putWord(bytes, slot, bytes.size() / unit);
        bytes.resize(bytes.size() + tableSize);
    }
    // Records may overlap: what follows the NUL of a short text is never shown,
    // so the next text can begin there.
    for (const auto& [number, message] : messages.texts) {
        const std::size_t offset = bytes.size();
        if (offset > static_cast<std::size_t>(lastOffset)) {
            messages.addProblem(message.line, "message " + std::to_string(number) +
                                                  " does not fit: a message file ends at " +
                                                  std::to_string(longestFile) + " bytes");
            continue;
        }
        const std::size_t slot = 4 + 2 * static_cast<std::size_t>(number / entryCount);
        const std::size_t table =
            wordAt(reinterpret_cast<const unsigned char*>(bytes.data()) + slot) *
            static_cast<std::size_t>(unit);
        putWord(bytes, table + 2 * static_cast<std::size_t>(number % entryCount), offset / unit);
        bytes += message.text;
        // Each text begins at a unit, for offsets count in those.
        bytes.resize(offset + roundedUp(message.text.size() + 1));
    }
    // The last texts are read whole, too.
    if (!messages.texts.empty())
        bytes.resize(bytes.size() + recordSize - unit);
    return bytes;
}
