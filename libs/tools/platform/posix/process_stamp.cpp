// SPDX-License-Identifier: Apache-2.0
// What tells a process from any other of the same number: the boot of the system, the namespace
// that counts its numbers, and the clock tick at which it was started. All of it is read from
// /proc, which may be missing or closed to us; then the answer is that nothing is known.
#include "tools/platform/host_process_stamp.h"

#include "tools/platform/posix/descriptor.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <iterator>
#include <sstream>
#include <string>
#include <unistd.h>

namespace kaz::host {

namespace {

/// What such a file of the system's holds: less than a page.
std::string contentsOf(const std::string& path) {
    const Descriptor file(retry([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC); }));
    std::array<char, 4096> buffer;
    const ssize_t size = retry([&] { return ::read(file.get(), buffer.data(), buffer.size()); });
    return size > 0 ? std::string(buffer.data(), static_cast<std::size_t>(size)) : std::string();
}

std::string firstWord(const std::string& text) {
    std::string word;
    std::istringstream(text) >> word;
    return word;
}

/// Process numbers are counted anew in each namespace.
std::string namespaceName() {
    std::array<char, 64> name;
    const ssize_t size = ::readlink("/proc/self/ns/pid", name.data(), name.size());
    return size > 0 ? std::string(name.data(), static_cast<std::size_t>(size)) : std::string();
}

} // namespace

std::string processPlace() {
    const std::string boot = firstWord(contentsOf("/proc/sys/kernel/random/boot_id"));
    const std::string space = namespaceName();
    return boot.empty() || space.empty() ? std::string() : boot + '/' + space;
}

/// The 22nd field of the status line (proc(5)). The second is the program's name in
/// brackets, which may hold blanks and brackets of its own; a "Z" in the third is a
/// process that is dead and not yet asked for its status.
std::string processStart(int number) {
    const std::string line = contentsOf("/proc/" + std::to_string(number) + "/stat");
    const std::size_t name = line.rfind(')');
    // The number may be given out and its file closed to us: the signal 0 asks whether there is
    // such a process and is sent to nobody.
    if (name == line.npos)
        return ::kill(number, 0) == 0 || errno == EPERM ? "?" : "";
    std::istringstream fields(line.substr(name + 1));
    const std::istream_iterator<std::string> first(fields);
    if (*first == "Z" || *first == "X")
        return {};
    // The 22nd is the 20th behind the name.
    return *std::next(first, 19);
}

} // namespace kaz::host
