// SPDX-License-Identifier: Apache-2.0
#include "testkit/capture.h"
#include "testkit/director.h"
#include "tools/app/exceptions/KazCancellationException.h"
#include "tools/app/exceptions/KazMemoryException.h"
#include "tools/app/exceptions/KazReportedException.h"
#include "tools/app/exceptions/KazTreeClashException.h"
#include "tools/app/failures/KazFileException.h"
#include "tools/app/failures/KazResourceException.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <utility>

namespace {

std::string fileMessage(int cause, const char* fileName) {
    return KazFileException(static_cast<KazFileException::CauseEnum>(cause), fileName)
        .getErrorMessage();
}

/// A tool's own, which has nothing to say.
struct Speechless : KazException {
    const char* getErrorMessage() override { return nullptr; }
};

/// What `catch (KazException&)` around a whole tool prints for @p thrown.
template <typename Thrown>
std::string reportOf(const Thrown& thrown) {
    const moxkit::RecordingDirector director;
    try {
        throw thrown;
    } catch (KazException& exception) {
        if (const char* text = exception.getErrorMessage()) {
            const std::string message = text;
            EXPECT_EQ(message, std::as_const(exception).getErrorMessage());
        }
        const bool reported = exception.reportError();
        EXPECT_EQ(reported, !director.errors.empty());
    }
    EXPECT_TRUE(director.messages.empty());
    return director.errors.empty() ? "" : director.errors.at(0);
}

TEST(Exceptions, WhatEscapesIsReportedThroughItsBase) {
    EXPECT_EQ(reportOf(KazMemoryException()), "Out of memory or swap space");
    EXPECT_EQ(reportOf(KazCancellationException()), "Cancelled");
    EXPECT_EQ(reportOf(KazResourceException("no \"100%s\" font")), "no \"100%s\" font");
    EXPECT_EQ(reportOf(KazFileException(KazFileException::badSeek, "50%n.dat")),
              "Seek failed on \"50%n.dat\"");
    EXPECT_EQ(reportOf(KazReportedException()), "");
    EXPECT_EQ(reportOf(Speechless()), "");
    EXPECT_EQ(reportOf(KazTreeClashException(nullptr)), "");
    EXPECT_EQ(reportOf(KazResourceException("")), "");
    EXPECT_EQ(reportOf(KazResourceException(nullptr)), "");
}

TEST(Exceptions, CopiesCarryTheirState) {
    KazResourceException original("first"), copy(original);
    original = KazResourceException("second");
    EXPECT_EQ(reportOf(copy) + reportOf(original), "firstsecond");
    KazFileException files[2];
    EXPECT_EQ(reportOf(files[0]), fileMessage(KazFileException::generic, nullptr));
    files[0] = files[1] = KazFileException(KazFileException::diskFull, "a");
    EXPECT_EQ(reportOf(files[0]), "Error writing to \"a\" - disk full.");
}

TEST(FileException, NamesTheFileInTheCausesText) {
    EXPECT_EQ(fileMessage(KazFileException::fileNotFound, "x y"), "Could not find \"x y\".");
    EXPECT_EQ(fileMessage(KazFileException::accessDenied, "x"),
              "Access to \"x\" was denied.A sharing violation occurred while accessing \"x\".");
    std::set<std::string> texts;
    for (int cause = 0; cause <= KazFileException::badFormat; ++cause) {
        const std::string text = fileMessage(cause, "");
        EXPECT_NE(text.find("an unnamed file"), std::string::npos);
        texts.insert(text);
    }
    EXPECT_EQ(texts.size(), 14u);
    for (int cause : {14, -1, 1000000, -2147483647}) {
        KazFileException exception(static_cast<KazFileException::CauseEnum>(cause), "x");
        EXPECT_EQ(exception.getCause(), cause);
        EXPECT_STREQ(exception.getErrorMessage(),
                     "An unknown error occurred while accessing \"x\".");
        EXPECT_EQ(exception.getCause(), KazFileException::generic);
    }
}

TEST(FileException, ErrorNumbersHaveTheirCausesAndAllOthersNone) {
    std::map<int, int> causes = {{1, 7},   {2, 4},  {5, 13}, {9, 10}, {13, 7},
                                 {22, 13}, {23, 4}, {24, 6}, {28, 2}, {36, 8}};
    for (int number = -5; number < 200; ++number)
        try {
            KazFileException::throwErrno(number, "f");
        } catch (KazFileException& exception) {
            EXPECT_EQ(exception.getCause(), causes[number]) << number;
            EXPECT_STREQ(exception.getFileName().getValue(), "f");
        }
}

} // namespace
