// SPDX-License-Identifier: Apache-2.0
#include "tools/app/failures/KazFileException.h"

#include <iterator>

namespace {

/// The message of each cause, in the order of the causes; "%s" stands for the
/// file. accessDenied names it twice: its two sentences, run together, are one
/// text that users and their scripts know.
constexpr const char* messageFormats[] = {
    "An unknown error occurred while accessing %s.",
    "Unexpected end of file while reading %s.",
    "Error writing to %s - disk full.",
    "Could not create %s because the directory is full.",
    "Could not find %s.",
    "Invalid path - %s.",
    "Could not open %s because there are too many open files.",
    "Access to %s was denied.A sharing violation occurred while accessing %s.",
    "A locking violation occurred while accessing %s.",
    "An invalid file handle was associated with %s.",
    "Could not remove %s because it is the current directory.",
    "Seek failed on %s",
    "A hardware I/O error was reported while accessing %s.",
    "File %s has unexpected format.",
};

constexpr int causeCount = static_cast<int>(std::size(messageFormats));
static_assert(causeCount == KazFileException::badFormat + 1);

struct ErrnoRow {
    int errnoValue;
    KazFileException::CauseEnum cause;
};

/// By number, not by the host's symbolic names: a number has to mean the same
/// cause on every platform, also where the host names another error so.
constexpr ErrnoRow errnoRows[] = {
    {1, KazFileException::accessDenied},      // EPERM
    {2, KazFileException::fileNotFound},      // ENOENT
    {5, KazFileException::badFormat},         // EIO
    {9, KazFileException::removeCurrentDir},  // EBADF
    {13, KazFileException::accessDenied},     // EACCES
    {22, KazFileException::badFormat},        // EINVAL
    {23, KazFileException::fileNotFound},     // ENFILE
    {24, KazFileException::tooManyOpenFiles}, // EMFILE
    {28, KazFileException::diskFull},         // ENOSPC
    {36, KazFileException::lockViolation},    // EDEADLOCK
};

KazString describeFile(const KazString& fileName) {
    KazString description("an unnamed file");
    if (!fileName.isEmpty())
        description.format("\"%s\"", fileName.getValue());
    return description;
}

} // namespace

KazFileException::KazFileException() : KazFileException(generic, nullptr) {}

KazFileException::KazFileException(CauseEnum cause, const char* fileName)
    : cause_(cause), fileName_(fileName) {}

KazFileException::~KazFileException() = default;

const char* KazFileException::getErrorMessage() {
    const KazString file = describeFile(fileName_);
    if (cause_ < 0 || cause_ >= causeCount)
        cause_ = generic;
    // Given twice for the one text that names the file twice; the others ignore
    // the second argument.
    message_.format(messageFormats[cause_], file.getValue(), file.getValue());
    return message_.getValue();
}

KazFileException::CauseEnum KazFileException::errnoToCause(int errnoValue) {
    for (const ErrnoRow& row : errnoRows)
        if (row.errnoValue == errnoValue)
            return row.cause;
    return generic;
}

void KazFileException::throwErrno(int errnoValue, const char* fileName) {
    throw KazFileException(errnoToCause(errnoValue), fileName);
}
