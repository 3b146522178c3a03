#include "kit/capture.h"
#include "kit/director.h"
#include "tools/app/KazCancellationException.h"
#include "tools/app/KazFileException.h"
#include "tools/app/KazMemoryException.h"
#include "tools/app/KazReportedException.h"
#include "tools/app/KazResourceException.h"
#include "tools/app/KazTreeClashException.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

namespace {

std::string messageOf(KazException& exception) {
    return exception.getErrorMessage();
}

std::string fileMessage(int cause, const char* fileName) {
    KazFileException exception(static_cast<KazFileException::CauseEnum>(cause), fileName);
    return messageOf(exception);
}

/// What `catch (KazException&)` around a whole tool prints for @p thrown.
template <typename Thrown>
std::string reportOf(const Thrown& thrown) {
    kit::Capture capture;
    bool reported = false;
    try {
        throw thrown;
    } catch (KazException& exception) {
        reported = exception.reportError();
    }
    EXPECT_EQ(capture.out(), "");
    EXPECT_EQ(reported, !capture.err().empty());
    return capture.err();
}

TEST(Exceptions, WhatEscapesIsReportedOnceThroughItsBase) {
    EXPECT_EQ(reportOf(KazMemoryException()), "Out of memory or swap space\n");
    EXPECT_EQ(reportOf(KazCancellationException()), "Cancelled\n");
    EXPECT_EQ(reportOf(KazResourceException("no \"100%s\" font")), "no \"100%s\" font\n");
    EXPECT_EQ(reportOf(KazFileException(KazFileException::badSeek, "50%n.dat")),
              "Seek failed on \"50%n.dat\"\n");
    EXPECT_EQ(reportOf(KazReportedException()), "");
    EXPECT_EQ(reportOf(KazTreeClashException(nullptr)), "");
    EXPECT_EQ(reportOf(KazResourceException("")), "");
    EXPECT_EQ(reportOf(KazResourceException(nullptr)), "");
}

TEST(Exceptions, ReportUsesTheErrorChannelOfTheInstalledDirector) {
    kit::RecordingDirector director;
    EXPECT_TRUE(KazCancellationException().reportError());
    EXPECT_FALSE(KazReportedException().reportError());
    EXPECT_EQ(director.errors, std::vector<std::string>{"Cancelled"});
    EXPECT_TRUE(director.messages.empty());
}

TEST(Exceptions, CopiesCarryTheirStateAndGoTheirOwnWay) {
    KazResourceException original("first");
    KazResourceException copy(original);
    original = KazResourceException("second");
    EXPECT_EQ(messageOf(copy), "first");
    EXPECT_EQ(messageOf(original), "second");

    int item = 0;
    KazTreeClashException clash(&item);
    KazTreeClashException assigned(nullptr);
    assigned = clash;
    EXPECT_EQ(assigned.getClashData(), &item);

    KazFileException files[2];
    EXPECT_EQ(messageOf(files[0]), "An unknown error occurred while accessing an unnamed file.");
    files[1] = KazFileException(KazFileException::diskFull, "a");
    files[0] = files[1];
    EXPECT_EQ(messageOf(files[0]), "Error writing to \"a\" - disk full.");
}

TEST(FileException, NamesTheFileInTheCausesText) {
    EXPECT_EQ(fileMessage(KazFileException::fileNotFound, "x y"), "Could not find \"x y\".");
    EXPECT_EQ(fileMessage(KazFileException::badSeek, nullptr), "Seek failed on an unnamed file");
    EXPECT_EQ(fileMessage(KazFileException::accessDenied, "x"),
              "Access to \"x\" was denied.A sharing violation occurred while accessing \"x\".");
    const std::string longName(40000, 'x');
    std::set<std::string> texts;
    for (int cause = 0; cause <= KazFileException::badFormat; ++cause) {
        std::string text = fileMessage(cause, longName.c_str());
        const std::string unnamed = fileMessage(cause, "");
        texts.insert(unnamed);
        for (std::size_t at; (at = text.find('"')) != std::string::npos;)
            text.replace(at, longName.size() + 2, "an unnamed file");
        EXPECT_EQ(text, unnamed);
        EXPECT_NE(text.find("an unnamed file"), std::string::npos);
    }
    EXPECT_EQ(texts.size(), 14u);
}

TEST(FileException, ACauseOutOfRangeBecomesGenericForGood) {
    for (int cause : {14, -1, 1000000, -2147483647}) {
        KazFileException exception(static_cast<KazFileException::CauseEnum>(cause), "x");
        EXPECT_EQ(exception.getCause(), cause);
        EXPECT_EQ(messageOf(exception), "An unknown error occurred while accessing \"x\".");
        EXPECT_EQ(exception.getCause(), KazFileException::generic);
        EXPECT_EQ(messageOf(exception), "An unknown error occurred while accessing \"x\".");
    }
}

TEST(FileException, ErrorNumbersHaveTheirCausesAndAllOthersNone) {
    const std::map<int, int> causes = {{1, 7},   {2, 4},  {5, 13}, {9, 10}, {13, 7},
                                       {22, 13}, {23, 4}, {24, 6}, {28, 2}, {36, 8}};
    for (int number = -5; number < 200; ++number) {
        const auto row = causes.find(number);
        const int cause = row != causes.end() ? row->second : 0;
        EXPECT_EQ(KazFileException::errnoToCause(number), cause) << number;
        bool thrown = false;
        try {
            KazFileException::throwErrno(number, "f");
        } catch (KazException& exception) {
            thrown = true;
            EXPECT_EQ(messageOf(exception), fileMessage(cause, "f"));
        }
        EXPECT_TRUE(thrown);
    }
}

} // namespace
