#include "common/output.h"

#include "tools/moxtools.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

namespace {

fs::path hostPath(const std::string& file) {
    return kazHostPath(file.c_str()).getValue();
}

/// Writes all and closes (but for standard output). False with errno set.
bool writeAll(std::FILE* stream, const std::string& bytes) {
    // Without a buffer it is known how much was written before an interruption.
    std::fflush(stream);
    std::setvbuf(stream, nullptr, _IONBF, 0);
    std::size_t written = 0;
    do {
        std::clearerr(stream);
        written += std::fwrite(bytes.data() + written, 1, bytes.size() - written, stream);
    } while (written < bytes.size() && errno == EINTR);
    bool done = written == bytes.size();
    const int reason = errno;
    if (stream != stdout)
        done = std::fclose(stream) == 0 && done;
    if (errno == 0)
        errno = reason;
    return done;
}

/// A new file beside @p target; null with errno set. Its name begins as the target's
/// does, which may leave no room for more.
std::FILE* openBeside(const fs::path& target, fs::path& temporary) {
    const std::string stem = target.filename().string().substr(0, 100);
    for (int attempt = 0; attempt < 1000; ++attempt) {
        temporary = target;
        temporary.replace_filename(stem + ".new" + std::to_string(attempt));
        std::FILE* stream = TI_fopen(kazNativePath(temporary.string().c_str()), "wbx");
        if (stream || errno != EEXIST)
            return stream;
    }
    return nullptr;
}

/// Behind a link is the file that is meant. Devices and pipes cannot be
/// replaced, only written to.
bool replaceFile(fs::path target, const std::string& bytes) {
    std::error_code error;
    if (fs::is_symlink(target, error) && fs::exists(target, error))
        target = fs::canonical(target, error);
    const fs::file_status status = fs::status(target, error);
    fs::path temporary;
    const bool inPlace = fs::exists(status) && !fs::is_regular_file(status);
    std::FILE* stream = inPlace ? TI_fopen(kazNativePath(target.string().c_str()), "wb")
                                : openBeside(target, temporary);
    if (!stream)
        return false;
    bool done = writeAll(stream, bytes);
    if (inPlace)
        return done;
    int reason = errno;
    if (done && fs::exists(status))
        fs::permissions(temporary, status.permissions(), error);
    if (done) {
        fs::rename(temporary, target, error);
        reason = error.value();
        done = !error;
    }
    if (!done)
        fs::remove(temporary, error);
    errno = reason;
    return done;
}

} // namespace

bool writeOutput(const std::string& file, const std::string& bytes) {
    errno = 0;
    if (file.empty() ? writeAll(stdout, bytes) : replaceFile(hostPath(file), bytes))
        return true;
    print_err("%s: cannot be written: %s", file.empty() ? "standard output" : file.c_str(),
              std::generic_category().message(errno).c_str());
    return false;
}

bool isSameFile(const std::string& a, const std::string& b) {
    std::error_code error;
    return fs::equivalent(hostPath(a), hostPath(b), error);
}
