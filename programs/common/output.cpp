// SPDX-License-Identifier: Apache-2.0
// What a file gets is collected and written at once, so that the file is whole or as before. What
// goes to standard output goes there line by line, and is made printable only where it is a
// terminal: scripts get the bytes. The first failure is kept until the end, and said once.
#include "common/output.h"

#include "common/printable.h"
#include "tools/files/streams.h"
#include "tools/files/tifiles.h"
#include "tools/files/tistatus.h"
#include "tools/messages/messages.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <system_error>

namespace {

/// False with errno set.
bool writeStandardOutput(const std::string& bytes) {
    // Without a buffer it is known how much was written before an interruption.
    if (std::fflush(stdout) != 0)
        return false;
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    std::size_t written = 0;
    do {
        // Or the mark of an interruption would pass for a failure at the end.
        std::clearerr(stdout);
        written += std::fwrite(bytes.data() + written, 1, bytes.size() - written, stdout);
    } while (written < bytes.size() && errno == EINTR);
    return written == bytes.size();
}

void complain(const std::string& what, int reason) {
    print_err("%s: cannot be written: %s", printable(what).c_str(),
              std::generic_category().message(reason != 0 ? reason : EIO).c_str());
}

/// What stands on each line, so that none of it can begin another one.
std::string printableLines(const std::string& text) {
    std::string result;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\n', begin), text.size());
        result += printable(text.substr(begin, end - begin));
        if (end < text.size())
            result += '\n';
        begin = end + 1;
    }
    return result;
}

} // namespace

bool writeOutput(const std::string& file, const std::string& bytes) {
    const bool isStandard = file.empty() || isStandardStream(file);
    errno = 0;
    // TI_writefile replaces the file only when all is written.
    if (isStandard ? writeStandardOutput(TI_isTerminal(stdout) ? printableLines(bytes) : bytes)
                   : TI_writefile(file.c_str(), bytes.data(), bytes.size()) == 0)
        return true;
    complain(isStandard ? "standard output" : file, errno);
    return false;
}

bool writeBytes(const std::string& file, const std::string& bytes) {
    if (!isStandardStream(file))
        return writeOutput(file, bytes);
    // Bytes could switch the terminal to anything.
    if (TI_isTerminal(stdout)) {
        print_err("standard output: is a terminal: what is written is no text");
        return false;
    }
    TI_passBytes(stdout);
    return writeOutput(file, bytes);
}

bool hasOutputArrived() {
    const int lastReason = errno; // nothing may be left to write, and no reason to meet again
    errno = 0;
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0)
        return true;
    complain("standard output", errno != 0 ? errno : lastReason);
    return false;
}

LineOutput::LineOutput(std::string name)
    : file_(isStandardStream(name) ? "" : std::move(name)), isOnTerminal_(TI_isTerminal(stdout)) {}

void LineOutput::line(const std::string& text) {
    if (!file_.empty()) {
        (bytes_ += text) += '\n';
        return;
    }
    errno = 0;
    print_msg("%s", isOnTerminal_ ? printable(text).c_str() : text.c_str());
    // Only the first: after it every line fails again, and with less to say.
    if (reason_ == 0 && std::ferror(stdout) != 0)
        reason_ = errno != 0 ? errno : EIO;
}

bool LineOutput::finish() {
    if (!file_.empty())
        return writeOutput(file_, bytes_);
    if (reason_ != 0)
        complain("standard output", reason_);
    return reason_ == 0;
}

bool isSameFile(const std::string& a, const std::string& b) {
    KazFileStatus one, two;
    return TI_status(a.c_str(), one) == 0 && TI_status(b.c_str(), two) == 0 && one.isSameFile(two);
}
