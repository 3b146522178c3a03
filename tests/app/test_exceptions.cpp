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
    const std::map<int, std::string> texts = {
        {0, "An unknown error occurred while accessing FILE."},
        {1, "Unexpected end of file while reading FILE."},
        {2, "Error writing to FILE - disk full."},
        {3, "Could not create FILE because the directory is full."},
        {4, "Could not find FILE."},
        {5, "Invalid path - FILE."},
        {6, "Could not open FILE because there are too many open files."},
        {7, "Access to FILE was denied.A sharing violation occurred while accessing FILE."},
        {8, "A locking violation occurred while accessing FILE."},
        {9, "An invalid file handle was associated with FILE."},
        {10, "Could not remove FILE because it is the current directory."},
        {11, "Seek failed on FILE"},
        {12, "A hardware I/O error was reported while accessing FILE."},
        {13, "File FILE has unexpected format."},
    };
    const auto filledIn = [](std::string text, const std::string& file) {
        for (std::size_t at = 0; (at = text.find("FILE", at)) != std::string::npos;
             at += file.size())
            text.replace(at, 4, file);
        return text;
    };
    const std::string longName(40000, 'x');
    for (const auto& [cause, text] : texts) {
        EXPECT_EQ(fileMessage(cause, "x y.dgm"), filledIn(text, "\"x y.dgm\""));
        EXPECT_EQ(fileMessage(cause, ""), filledIn(text, "an unnamed file"));
        EXPECT_EQ(fileMessage(cause, nullptr), filledIn(text, "an unnamed file"));
        EXPECT_EQ(fileMessage(cause, longName.c_str()), filledIn(text, "\"" + longName + "\""));
    }
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
