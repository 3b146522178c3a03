// SPDX-License-Identifier: Apache-2.0
// The sums are zlib's; what is added here is what it leaves to its callers: sizes beyond the
// host's long, null data, and files.
#include "tools/services/crc32.h"

#include "tools/files/detail/text.h"
#include "tools/platform/host.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <zlib.h>

namespace host = kaz::host;

namespace {

/// A run of zero bytes turns a checksum over by x^(8n). The polynomial is primitive,
/// so this repeats after that many bytes.
constexpr std::uint64_t period = 0xFFFFFFFF;
/// The most bytes that zlib's own number of them holds on every host.
constexpr std::uint64_t most = 1U << 30;

} // namespace

std::uint32_t kaz_crc32(std::uint32_t crc, const void* data, std::size_t size) {
    // Null data would give zlib's initial value instead.
    return data == nullptr
               ? crc
               : static_cast<std::uint32_t>(::crc32_z(crc, static_cast<const Bytef*>(data), size));
}

std::uint32_t kaz_crc32_combine(std::uint32_t first, std::uint32_t second,
                                std::uint64_t secondSize) {
    // Combining with 0 moves the first sum over that many bytes. The second one is then added,
    // which can be done once at the end since sums are linear.
    uLong moved = first;
    std::uint64_t left = secondSize % period;
    while (left > 0) {
        const std::uint64_t step = std::min(left, most);
        moved = ::crc32_combine(moved, 0, static_cast<z_off_t>(step));
        left -= step;
    }
    return static_cast<std::uint32_t>(moved) ^ second;
}

int kaz_crc32_file(const char* path, std::uint32_t* crc, std::uint64_t* size) {
    const host::ReadableFile file(kaz::detail::orEmpty(path));
    if (!file.isOpen())
        return -1;
    std::array<char, 64 * 1024> buffer;
    std::uint32_t sum = 0;
    std::uint64_t count = 0;
    std::size_t got = 0;
    // read() gives fewer bytes at the end and on failure alike; errno alone tells which.
    const int before = errno;
    errno = 0;
    do {
        got = file.read(count, buffer.data(), buffer.size());
        sum = kaz_crc32(sum, buffer.data(), got);
        count += got;
    } while (got == buffer.size());
    if (errno != 0)
        return -1;
    errno = before;
    if (crc != nullptr)
        *crc = sum;
    if (size != nullptr)
        *size = count;
    return 0;
}
