// SPDX-License-Identifier: Apache-2.0
// Some file systems never tell names apart by case, which their number says. Others leave it
// to each directory, which has a flag for that. The rest may do either, as they were made (HFS+),
// are mounted, or as the other machine has it (CIFS).
#include "tools/platform/host.h"
#include "tools/platform/posix/descriptor.h"

#include <algorithm>
#include <cstdint>
#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/vfs.h>

namespace kaz::host {

namespace {

// The numbers of linux/magic.h, of which older systems lack some.
constexpr std::uint32_t caseless[] = {
    0x4d44,     // vfat
    0x2011bab0, // exfat
    0x5346544e, // ntfs, the driver that only reads
    0x4244,     // hfs
};
constexpr std::uint32_t byDirectory[] = {
    0xef53,     // ext4
    0xf2f52010, // f2fs
    0x01021994, // tmpfs
    0xca451a4e, // bcachefs
};

template <std::size_t N>
bool isAmong(const std::uint32_t (&kinds)[N], std::uint32_t kind) {
    return std::find(kinds, kinds + N, kind) != kinds + N;
}

/// The directory's own flag; nothing where it may not be read or has no flags.
std::optional<bool> hasFlag(int dir) {
    // The handle itself stands for the directory and is not open for anything.
    const Descriptor file(
        retry([&] { return ::openat(dir, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    int flags = 0; // what the call writes, whatever type its name speaks of
    if (!file.isOpen() || ::ioctl(file.get(), FS_IOC_GETFLAGS, &flags) != 0)
        return {};
    return (flags & FS_CASEFOLD_FL) != 0;
}

} // namespace

std::optional<bool> Directory::ignoresCase() const {
    struct statfs info;
    if (retry([&] { return ::fstatfs(open_.descriptor.get(), &info); }) != 0)
        return {};
    const auto kind = static_cast<std::uint32_t>(info.f_type);
    if (isAmong(caseless, kind))
        return true;
    return isAmong(byDirectory, kind) ? hasFlag(open_.descriptor.get()) : std::nullopt;
}

} // namespace kaz::host
