// SPDX-License-Identifier: Apache-2.0
/// @file
/// A failed file operation.
#pragma once

#include "tools/app/exceptions/KazException.h"
#include "tools/strings/KazString.h"

/// A file could not be used: which one, and why.
class KAZ_API KazFileException : public KazException {
public:
    /// Why. Each cause selects one message text.
    enum CauseEnum : int {
        generic = 0,
        endOfFile = 1,
        diskFull = 2,
        directoryFull = 3,
        fileNotFound = 4,
        badPath = 5,
        tooManyOpenFiles = 6,
        accessDenied = 7,
        lockViolation = 8,
        invalidFile = 9,
        removeCurrentDir = 10,
        badSeek = 11,
        hardIO = 12,
        badFormat = 13
    };

    /// An unknown error on an unnamed file.
    KazFileException();
    /// @param cause     kept as it is, also out of range (see getErrorMessage())
    /// @param fileName  copied; null and "" both mean an unnamed file
    KazFileException(CauseEnum cause, const char* fileName);
    KazFileException(const KazFileException&) = default;
    KazFileException& operator=(const KazFileException&) = default;
    ~KazFileException() override;

    /// The cause's text with the file's name in double quotes, or "an unnamed
    /// file". It is made anew by each call; the previous result dies with it.
    /// A cause out of range becomes `generic`, for good.
    const char* getErrorMessage() override;
    using KazException::getErrorMessage;

    /// Why, as it was given; `generic` once getErrorMessage() has met one out of range.
    CauseEnum getCause() const { return cause_; }
    /// The file as it was given; "" for an unnamed one.
    const KazString& getFileName() const { return fileName_; }

    /// The cause that stands for a value of `errno`; `generic` for those that
    /// have none. Some pairings do not match the error's usual meaning: tools
    /// and their users know the resulting texts.
    static CauseEnum errnoToCause(int errnoValue);

    /// Throws a KazFileException with errnoToCause(@p errnoValue).
    [[noreturn]] static void throwErrno(int errnoValue, const char* fileName);

private:
    CauseEnum cause_;
    KazString fileName_;
    KazString message_;
};
