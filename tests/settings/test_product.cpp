// SPDX-License-Identifier: Apache-2.0
#include "kit/table.h"
#include "testkit/env.h"
#include "testkit/process.h"
#include "testkit/random.h"
#include "testkit/temp_tree.h"
#include "tools/app/failures/KazFileException.h"
#include "tools/services/crc32.h"
#include "tools/settings/KazProductInfo.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using Info = KazProductInfo;

/// The text with the checksum that belongs to it.
std::string sealed(const std::string& text) {
    KazString last;
    last.format("checksum=%08X\n", kaz_crc32(0, text.data(), text.size()));
    return text + last.getValue();
}

constexpr const char* good = "% Product information\nname=Mox\nversion=2.4.1\nbuild=1873\n"
                             "date=2026-11-21\nvendor=Tarvo\n"
                             "part=1a2b3c4d 351232 1.0 bin/libmoxtools.so\n"
                             "part=00000000 0 - share/a b.txt\n";

class Product : public testing::Test {
protected:
    moxkit::Result run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "moxinfo");
        moxkit::RunOptions options;
        options.cwd = tree.path();
        options.env = {{"LC_ALL", "C"}, {"ToolInfo", moxkit::unset}, {"TOOLINFO", moxkit::unset}};
        moxkit::Result result = moxkit::run(arguments, options);
        std::erase(result.out, '\r');
        std::erase(result.err, '\r');
        return result;
    }

    moxkit::TempTree tree;
};

/// Which texts are valid is the model's to show.
TEST_F(Product, ReadsWhatIsDescribed) {
    Info info;
    EXPECT_EQ(info.parse(sealed(good).c_str()), Info::Good);
    EXPECT_EQ(info.getVersion() + " " + info.getDate(), "2.4.1 2026-11-21");
    EXPECT_EQ(info.getBuild(), 1873);
    EXPECT_EQ(info.findPart("bin\\libmoxtools.so"), 0);
    EXPECT_EQ(info.getPart(0).checksum, 0x1A2B3C4Du);
    EXPECT_EQ(info.getPart(0).size, 351232u);
    EXPECT_EQ(info.getPart(1).path, "share/a b.txt");
    EXPECT_TRUE(info.getPart(1).version.isEmpty() && info.getPart(2).path.isEmpty());

    std::string text = sealed(good);
    text.replace(text.find("2.4.1"), 5, "2.4.2");
    EXPECT_EQ(info.parse(text.c_str()), Info::WrongChecksum);
    EXPECT_EQ(info.getVersion(), "2.4.2");
    EXPECT_EQ(info.getProblem(), "The product information file \"\" has been changed.");
    EXPECT_EQ(info.parse(std::string((4 << 20) + 1, '\n').c_str()), Info::Unreadable);
}

TEST_F(Product, WritesWholeOrThrows) {
    Info info;
    const auto causeOf = [&](const std::string& path) {
        try {
            info.write(path.c_str());
        } catch (const KazFileException& failure) {
            return static_cast<int>(failure.getCause());
        }
        return -1;
    };
    EXPECT_EQ(causeOf(tree.path("file")), KazFileException::badFormat);
    info.setName("a");
    info.setVersion("1");
    EXPECT_EQ(causeOf(tree.path("none/file")), KazFileException::fileNotFound);
    EXPECT_EQ(causeOf(tree.path("file")), -1);
    EXPECT_EQ(Info().read(tree.path("file").c_str()), Info::Good);
    EXPECT_EQ(info.read(tree.path("none").c_str()), Info::Missing);
    EXPECT_EQ(info.read(tree.path().c_str()), Info::Unreadable);
    EXPECT_EQ(info.getProblem(),
              ("The product information file \"" + tree.path() + "\" cannot be read.").c_str());
    info.read("no\xE2\x80\xAEne");
    EXPECT_EQ(info.getProblem(), "There is no product information file \"no\\u{202E}ne\".");
}

TEST_F(Product, OrdersVersions) {
    const std::vector<std::string> order = kit::parts(
        "0|1.0.0-alpha|1.0.0-alpha.1|1.0.0-alpha.beta|1.0.0-beta|1.0.0-beta.2|1.0.0-beta.11|"
        "1.0.0-rc.1|1|1.0.0.1|1.2-rc.1|1.2|1.10|1.x|1.y|2|99999999999999999999|"
        "100000000000000000000|x");
    for (std::size_t i = 0; i < order.size(); ++i)
        for (std::size_t j = 0; j < order.size(); ++j)
            EXPECT_EQ(Info::compareVersions(order[i].c_str(), order[j].c_str()), (i > j) - (i < j))
                << order[i] << " and " << order[j];
    EXPECT_EQ(Info::compareVersions("1.2", "1.2.0+build.7"), 0);
    EXPECT_EQ(Info::compareVersions("01.2-a", "1.02.0-a+b"), 0);
    EXPECT_EQ(Info::compareVersions(nullptr, "0.0"), 0);
}

TEST_F(Product, TheProgramShowsDamageAndMeasuresAnew) {
    tree.write("bin/lib.so", "library");
    tree.write("share/a b.txt", "text");
    tree.write("Info", "name=Mox\nversion=2.4.1\nbuild=1873\ndate=2026-11-"
                       "21\nvendor=Tarvo\nalso=1\n"
                       "part=00000000 0 1.0 bin/lib.so\n");
    moxkit::Result result = run({"-product", "Info"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err,
              "The product information file \"" + tree.native("Info") + "\" has no checksum.\n");
    EXPECT_EQ(result.out, "Mox 2.4.1 (build 1873, 2026-11-21)\nalso=1\nvendor=Tarvo\n"
                          "part bin/lib.so 1.0 wrong size\n1 part, 1 problem\n");
    result = run({"-product", "Info", "-update", "share\\a b.txt", "bin/lib.so"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out + result.err, "");
    result = run({"-product", "./Info", "-verbose"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, "Mox 2.4.1 (build 1873, 2026-11-21)\nalso=1\nvendor=Tarvo\n"
                          "part bin/lib.so 1.0 good\npart share/a b.txt - good\n"
                          "2 parts, 0 problems\n");
    tree.write("bin/lib.so", "Library");
    fs::remove(tree.path("share/a b.txt"));
    result = run({"-product", "Info", "-output", "shown"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(tree.readText("shown"),
              "Mox 2.4.1 (build 1873, 2026-11-21)\nalso=1\nvendor=Tarvo\n"
              "part bin/lib.so 1.0 wrong checksum\npart share/a b.txt - missing\n"
              "2 parts, 2 problems\n");
    const std::string before = tree.read("Info");
    result = run({"-product", "Info", "-update"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.err, "share/a b.txt: cannot be measured: No such file or directory\n");
    EXPECT_EQ(tree.read("Info"), before);
    EXPECT_EQ(run({"-product", "Info", "-update", "../x"}).status, 1);

    tree.write("Info", "name=Mox\n");
    EXPECT_EQ(run({"-product", "Info"}).err, "Line 2 of the product information file \"" +
                                                 tree.native("Info") + "\" is not valid.\n");
    EXPECT_EQ(run({"-product", "./no"}).err,
              "There is no product information file \"" + tree.native("no") + "\".\n");
    EXPECT_NE(run({"-product", "No"}).err.find("ProductInfo.no\"."), std::string::npos);
    EXPECT_EQ(run({"-update"}).status, 2);
    EXPECT_EQ(run({"-product", "Info", "more"}).status, 2);
}

} // namespace
