// SPDX-License-Identifier: Apache-2.0
// What is left of a product information file when writing it goes wrong.
#include "kit/posix/call_sweep.h"
#include "testkit/alloc_failure.h"
#include "testkit/temp_tree.h"
#include "tools/app/failures/KazFileException.h"
#include "tools/settings/KazProductInfo.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <string>

namespace {

namespace fs = std::filesystem;

class ProductFile : public testing::Test, protected kit::CallSweep {
protected:
    ProductFile() {
        info.setName("Mox");
        info.setVersion("2.4.1");
        tree.write("part", "contents");
        EXPECT_TRUE(info.addPart(tree.path().c_str(), "part", "1.0"));
        next = info.getText().getValue();
    }

    /// False when it was refused with an exception.
    bool write() const {
        try {
            info.write(tree.native("place/Info").c_str());
        } catch (const KazFileException&) {
            return false;
        }
        return true;
    }

    /// A place with nothing, a file or a link to one.
    void prepare(const std::string& kind) const {
        fs::remove_all(tree.path("place"));
        tree.mkdir("place");
        if (kind == "link")
            fs::create_symlink("behind", tree.path("place/Info"));
        if (kind != "nothing")
            tree.write("place/Info", old);
    }

    void expectOnly(const std::string& text, const std::string& kind) const {
        EXPECT_EQ(tree.read("place/Info"), text);
        EXPECT_EQ(fs::is_symlink(tree.path("place/Info")), kind == "link");
        const fs::directory_iterator all(tree.path("place"));
        const auto files = std::distance(all, fs::directory_iterator());
        EXPECT_EQ(files, (text.empty() ? 0 : 1) + (kind == "link" ? 1 : 0));
    }

    /// In memory where that is possible: each write waits for the disk.
    moxkit::TempTree tree{fs::is_directory("/dev/shm") ? "/dev/shm" : ""};
    KazProductInfo info;
    const std::string old = "% an earlier one\n";
    std::string next;
};

TEST_F(ProductFile, EachCallOfAWriteThatFailsLeavesTheOldOrTheNewOne) {
    for (const std::string kind : {"nothing", "file", "link"}) {
        SCOPED_TRACE(kind);
        const std::string before = kind == "nothing" ? "" : old;
        bool written = false;
        sweep([&] { prepare(kind); }, [&] { written = write(); },
              [&](bool harmless) {
                  EXPECT_TRUE(written || !harmless);
                  expectOnly(written ? next : before, kind);
                  EXPECT_TRUE(write()); // nothing is in the way of the next one
                  expectOnly(next, kind);
              });
    }
}

TEST_F(ProductFile, EachAllocationOfAWriteThatFailsLeavesTheOldOrTheNewOne) {
    for (const auto mode : {moxkit::FailAllocation::once, moxkit::FailAllocation::onward}) {
        prepare("link");
        bool written = false;
        const long before = kit::openFiles();
        const long failures = moxkit::sweepAllocations(
            [&] {
                written = false;
                written = write();
            },
            [&] {
                expectOnly(written ? next : old, "link"); // sorting can do without
                EXPECT_EQ(kit::openFiles(), before);
                prepare("link");
            },
            mode);
        EXPECT_GT(failures, 10);
        expectOnly(next, "link");
    }
}

} // namespace
