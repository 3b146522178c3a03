// SPDX-License-Identifier: Apache-2.0
// Directories by handle among links, pipes and holes, and while somebody exchanges them.
#include "files/tree.h"
#include "kit/posix/deep_tree.h"
#include "kit/posix/exchanger.h"
#include "testkit/temp_tree.h"
#include "tools/files/KazDirectory.h"
#include "tools/files/KazFileManager.h"
#include "tools/files/KazTreeCursor.h"
#include "tools/files/processstamp.h"
#include "tools/files/tistatus.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <linux/fiemap.h>
#include <linux/fs.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

class DirectoryHost : public testing::Test {
protected:
    moxkit::TempTree tree{fs::is_directory("/dev/shm") ? "/dev/shm" : ""};
    const KazDirectory top{tree.native().c_str()};
};

/// Few handles, for as long as it exists.
class FewHandles {
public:
    FewHandles() {
        ::getrlimit(RLIMIT_NOFILE, &before_);
        const rlimit few{64, before_.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &few);
    }
    ~FewHandles() { ::setrlimit(RLIMIT_NOFILE, &before_); }
    FewHandles(const FewHandles&) = delete;
    FewHandles& operator=(const FewHandles&) = delete;

private:
    rlimit before_{};
};

TEST_F(DirectoryHost, DepthCostsNeitherHandlesNorStack) {
    constexpr int depth = 20'000;
    kit::digTree(tree.mkdir("src"), depth);
    tree.mkdir("dst");
    const FewHandles few;
    KazFileManager manager(tree.native("src").c_str());
    EXPECT_TRUE(manager.copy(tree.native("dst").c_str(), true)) << manager.getErrors().getLength();
    EXPECT_EQ(kit::depthOfTree(tree.path("dst/src")), depth);
    EXPECT_TRUE(manager.destroy(true));
    EXPECT_TRUE(manager.getErrors().isEmpty());
    EXPECT_EQ(TI_rmtree(tree.native("dst").c_str()), 0);
    EXPECT_TRUE(fs::is_empty(tree.path()));
}

TEST_F(DirectoryHost, LinksAndPipesAreWhatTheyAre) {
    tree.write("outside/f", "untouched");
    tree.mkdir("d/sub");
    fs::create_directory_symlink(tree.path("outside"), tree.path("d/link"));
    fs::create_symlink(tree.path("outside/f"), tree.path("d/file"));
    fs::create_symlink("nowhere", tree.path("d/dangling"));
    ASSERT_EQ(::mkfifo(tree.path("d/pipe").c_str(), 0600), 0);
    const KazDirectory d = top.openDirectory("d");
    EXPECT_FALSE(d.openDirectory("link").isOpen());
    EXPECT_EQ(errno, ENOTDIR);
    for (const char* mode : {"r", "w", "a"}) {
        EXPECT_EQ(d.openFile("file", mode), nullptr);
        EXPECT_EQ(errno, ELOOP);
        EXPECT_EQ(d.openFile("pipe", mode), nullptr);
        EXPECT_TRUE(errno == EINVAL || errno == ENXIO) << errno;
    }
    KazFileStatus status;
    EXPECT_EQ(d.getStatus("file", status), 0);
    EXPECT_EQ(status.kind, KazFileKind::Link);
    EXPECT_EQ(d.getStatus("file", status, true), 0);
    EXPECT_EQ(status.kind, KazFileKind::File);
    EXPECT_TRUE(TI_exists((tree.native("d") + "\\dangling").c_str()));
    EXPECT_NE(TI_rmdir((tree.native("d") + "\\link\\").c_str()), 0);
    // Exchanged since it was listed.
    EXPECT_EQ(d.copyFile({"file", KazFileKind::File, true}, top), -1);
    EXPECT_EQ(d.rename("sub", d, "link", true), -1) << "a directory replaces no link";
    EXPECT_EQ(TI_rmtree(tree.native("d").c_str()), 0);
    EXPECT_EQ(tree.read("outside/f"), "untouched");
    EXPECT_FALSE(tree.exists("f"));
}

TEST_F(DirectoryHost, HolesStayHoles) {
    constexpr off_t size = off_t{1} << 30;
    const std::string source = tree.path("sparse");
    const int file = ::open(source.c_str(), O_RDWR | O_CREAT, 0666);
    ASSERT_EQ(::ftruncate(file, size), 0);
    for (const off_t place : {off_t{0}, off_t{5} << 20, size / 2 + 7, size - (off_t{1} << 20)})
        ASSERT_EQ(::pwrite(file, "data", 4, place), 4);
    ::close(file);
    const KazDirectory to(tree.mkdir("to").c_str());
    const mode_t mask = ::umask(027);
    KazCopyRules rules;
    rules.cutByMask = true;
    for (const bool inPlace : {false, true}) {
        rules.inPlace = inPlace;
        ASSERT_EQ(top.copyFile({"sparse", KazFileKind::File, true}, to, rules), 0);
        struct stat info {};
        ASSERT_EQ(::stat(tree.path("to/sparse").c_str(), &info), 0);
        EXPECT_EQ(info.st_size, size);
        EXPECT_LT(info.st_blocks * 512, size / 100);
        EXPECT_EQ(info.st_mode & 0777, 0640u);
        const int copy = ::open(tree.path("to/sparse").c_str(), O_RDONLY);
        for (const off_t place :
             {off_t{0}, off_t{5} << 20, size / 2 + 7, size - (off_t{1} << 20)}) {
            char text[4] = {};
            EXPECT_EQ(::pread(copy, text, 4, place), 4);
            EXPECT_EQ(std::string(text, 4), "data");
        }
        ::close(copy);
        to.removeFile("sparse");
    }
    ::umask(mask);
}

/// A file system whose files can share blocks, in an image, where one can be mounted.
class SharingDisk {
public:
    explicit SharingDisk(const moxkit::TempTree& tree) : place_(tree.mkdir("disk")) {
        const std::string image = tree.write("image", "");
        if (::truncate(image.c_str(), off_t{400} << 20) == 0)
            isThere_ =
                std::system(("PATH=/usr/sbin:$PATH; { mkfs.xfs -q -m reflink=1 " + image +
                             " && mount -o loop " + image + " " + place_ + "; } >/dev/null 2>&1")
                                .c_str()) == 0;
    }
    ~SharingDisk() {
        if (isThere_)
            ::umount2(place_.c_str(), MNT_DETACH);
    }
    SharingDisk(const SharingDisk&) = delete;
    SharingDisk& operator=(const SharingDisk&) = delete;

    bool isThere() const { return isThere_; }

private:
    std::string place_;
    bool isThere_ = false;
};

bool sharesItsFirstBlock(const std::string& path) {
    alignas(fiemap) char memory[sizeof(fiemap) + sizeof(fiemap_extent)] = {};
    auto* map = new (memory) fiemap;
    map->fm_length = FIEMAP_MAX_OFFSET;
    map->fm_flags = FIEMAP_FLAG_SYNC;
    map->fm_extent_count = 1;
    const int file = ::open(path.c_str(), O_RDONLY);
    EXPECT_EQ(::ioctl(file, FS_IOC_FIEMAP, map), 0);
    ::close(file);
    return map->fm_mapped_extents == 1 && (map->fm_extents[0].fe_flags & FIEMAP_EXTENT_SHARED) != 0;
}

TEST_F(DirectoryHost, BlocksAreSharedWhereTheFileSystemDoesThat) {
    const SharingDisk disk(tree);
    if (!disk.isThere())
        GTEST_SKIP() << "no such file system can be made here";
    const std::string text(1'000'001, 't');
    tree.write("disk/large", text);
    tree.mkdir("disk/to");
    const KazDirectory from(tree.native("disk").c_str()), to(tree.native("disk/to").c_str());
    KazCopyRules rules;
    std::uint64_t size = 0;
    rules.size = &size;
    for (const bool inPlace : {false, true}) {
        rules.inPlace = inPlace;
        ASSERT_EQ(from.copyFile({"large", KazFileKind::File, true}, to, rules), 0);
        EXPECT_TRUE(sharesItsFirstBlock(tree.path("disk/to/large")));
        EXPECT_EQ(tree.read("disk/to/large"), text);
        EXPECT_EQ(size, text.size());
        EXPECT_EQ(to.removeFile("large"), 0);
    }
}

TEST_F(DirectoryHost, AMovedTreeIsFoundAgainOrLetGo) {
    kit::digTree(tree.mkdir("a"), 40);
    tree.mkdir("b");
    KazTreeCursor cursor{KazDirectory(tree.native().c_str())};
    ASSERT_EQ(cursor.enter("a"), 0);
    for (int i = 0; i < 40; ++i)
        ASSERT_EQ(cursor.enter("d"), 0);
    // What is around the upper part is another directory now.
    fs::rename(tree.path("a/d/d"), tree.path("b/d"));
    for (int depth = 40; depth > 2; --depth)
        ASSERT_EQ(cursor.leave(), 0) << depth;
    EXPECT_TRUE(cursor.directory().isOpen());
    EXPECT_EQ(cursor.leave(), 0) << "found by its names";
    EXPECT_EQ(cursor.directory().makeDirectory("here", 0755), 0);
    EXPECT_TRUE(tree.exists("a/d/here"));
    EXPECT_EQ(cursor.leave(), 0);
    EXPECT_EQ(cursor.leave(), 0);

    kit::digTree(tree.mkdir("c"), 40);
    ASSERT_EQ(cursor.enter("c"), 0);
    for (int i = 0; i < 40; ++i)
        ASSERT_EQ(cursor.enter("d"), 0);
    fs::rename(tree.path("c/d/d"), tree.path("b/e"));
    fs::remove(tree.path("c/d"));
    for (int depth = 40; depth > 2; --depth)
        ASSERT_EQ(cursor.leave(), 0) << depth;
    EXPECT_EQ(cursor.leave(), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_FALSE(cursor.directory().isOpen());
    EXPECT_EQ(cursor.leave(), 0) << "the next one is there";
    EXPECT_TRUE(cursor.directory().isOpen());
}

TEST_F(DirectoryHost, RemovalStaysInsideWhileDirectoriesAreExchanged) {
    tree.write("outside/f", "untouched");
    tree.mkdir("work/d");
    fs::create_directory_symlink(tree.path("outside"), tree.path("link"));
    const kit::Exchanger exchanger(tree.path("work/d"), tree.path("link"));
    for (kit::Attempts attempts(300); attempts.next();) {
        tree.mkdir("work/e");
        fs::create_directory_symlink(tree.path("outside"), tree.path("work/e/l"));
        TI_rmtree(tree.native("work").c_str());
        ASSERT_EQ(tree.read("outside/f"), "untouched") << attempts.made();
    }
}

TEST_F(DirectoryHost, AStampOutlivesItsProcess) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        const std::string stamp = kazProcessStamp().getValue();
        ::_exit(::write(ends[1], stamp.data(), stamp.size()) > 0 ? 0 : 1);
    }
    char text[400] = {};
    ASSERT_GT(::read(ends[0], text, sizeof text - 1), 0);
    while (kazIsRunning(text) == 1)
        ::usleep(1000);
    EXPECT_EQ(kazIsRunning(text), 0) << "dead, and not yet waited for";
    ::waitpid(child, nullptr, 0);
    EXPECT_EQ(kazIsRunning(text), 0);
    ::close(ends[0]);
    ::close(ends[1]);
}

} // namespace
