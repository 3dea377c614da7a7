#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "platform/PlatformTestUtil.h"
#include "vx/platform/File.h"
#include "vx/platform/Path.h"

namespace {

using platform_test::ReadFile;
using platform_test::TempDir;
using vel::CVelFile;

TEST(File, OpensOnlyRegularFilesForReadingAndReadsExactly) {
    TempDir dir;
    CVelFile file;
    EXPECT_FALSE(file.CreateFileA((dir / "missing").c_str(), CVelFile::eOpenRead));
    EXPECT_EQ(CVelFile::GetLastError(), ENOENT);
    EXPECT_FALSE(file.CreateFileA(dir.Path().c_str(), CVelFile::eOpenRead));
    EXPECT_EQ(CVelFile::GetLastError(), EISDIR);
    // Without a writer, a blocking open of a FIFO would hang here.
    ASSERT_EQ(mkfifo((dir / "fifo").c_str(), 0600), 0);
    EXPECT_FALSE(file.CreateFileA((dir / "fifo").c_str(), CVelFile::eOpenRead));
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ(file.GetSize(), -1);
    EXPECT_FALSE(file.CreateFileA("/dev/zero", CVelFile::eOpenRead));  // would never end

    // Reads and seeks succeed only for exactly the bytes asked for.
    const std::string name = dir / "data";
    ASSERT_TRUE(file.CreateFileA(name.c_str(), CVelFile::eOpenWrite));
    ASSERT_TRUE(file.Write("long first text", 15));
    ASSERT_TRUE(file.CreateFileA(name.c_str(), CVelFile::eOpenWrite));  // truncates
    ASSERT_TRUE(file.Write("hello", 5));
    file.Close();

    ASSERT_TRUE(file.CreateFileA(name.c_str(), CVelFile::eOpenRead));
    EXPECT_EQ(file.GetSize(), 5);
    char buffer[8] = {};
    EXPECT_FALSE(file.Read(buffer, 6));  // end of file before six bytes
    ASSERT_TRUE(file.SetFilePointer(1, CVelFile::eSeekBegin));
    ASSERT_TRUE(file.Read(buffer, 4));
    EXPECT_EQ(std::string(buffer, 4), "ello");
    EXPECT_FALSE(file.Read(buffer, 1));
    ASSERT_TRUE(file.SetFilePointer(-2, CVelFile::eSeekEnd));
    ASSERT_TRUE(file.Read(buffer, 2));
    EXPECT_EQ(std::string(buffer, 2), "lo");
    EXPECT_FALSE(file.SetFilePointer(-10, CVelFile::eSeekCurrent));
    EXPECT_EQ(CVelFile::GetLastError(), EINVAL);
}

namespace fs = std::filesystem;

void Write(const std::string& path, const std::string& bytes, fs::perms mode) {
    platform_test::WriteFile(path, bytes);
    fs::permissions(path, mode);
}

bool Replace(const std::string& path, const std::string& bytes) {
    return vel::ReplaceFileContents(path.c_str(), bytes.data(), static_cast<int>(bytes.size()));
}

using Listing = std::vector<std::string>;

// The names in the directory, sorted: a temporary file left behind shows here.
Listing Names(const std::string& directory) {
    Listing names;
    for (const auto& entry : fs::directory_iterator(directory))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

TEST(ReplaceFile, KeepsThePermissionsAndReplacesWhatALinkNames) {
    TempDir dir;
    Write(dir / "plain.xml", "old text", fs::perms(0640));
    ASSERT_TRUE(Replace(dir / "plain.xml", "new"));
    EXPECT_EQ(ReadFile(dir / "plain.xml"), "new");
    EXPECT_EQ(fs::status(dir / "plain.xml").permissions(), fs::perms(0640));

    const mode_t mask = umask(027);
    ASSERT_TRUE(Replace(dir / "fresh.xml", ""));
    umask(mask);
    EXPECT_EQ(fs::status(dir / "fresh.xml").permissions(), fs::perms(0640));
    EXPECT_EQ(ReadFile(dir / "fresh.xml"), "");

    // A relative link resolves against its own directory; a chain is followed to its end.
    fs::create_directory(dir / "sub");
    Write(dir / "sub/real.xml", "old", fs::perms(0600));
    fs::create_symlink("sub/real.xml", dir / "link.xml");
    fs::create_symlink(dir / "link.xml", dir / "sub/second.xml");
    ASSERT_TRUE(Replace(dir / "sub/second.xml", "through two links"));
    EXPECT_EQ(ReadFile(dir / "sub/real.xml"), "through two links");
    EXPECT_EQ(fs::status(dir / "sub/real.xml").permissions(), fs::perms(0600));
    EXPECT_TRUE(fs::is_symlink(dir / "link.xml"));
    EXPECT_EQ(fs::read_symlink(dir / "sub/second.xml"), dir / "link.xml");

    // A link to no file yet makes the file it names.
    fs::create_symlink("made.xml", dir / "dangling.xml");
    ASSERT_TRUE(Replace(dir / "dangling.xml", "made"));
    EXPECT_TRUE(fs::is_symlink(dir / "dangling.xml"));
    EXPECT_EQ(ReadFile(dir / "made.xml"), "made");
    EXPECT_EQ(Names(dir.Path()),
              (Listing{"dangling.xml", "fresh.xml", "link.xml", "made.xml", "plain.xml", "sub"}));
    EXPECT_EQ(Names(dir / "sub"), (Listing{"real.xml", "second.xml"}));
}

TEST(ReplaceFile, AFailureLeavesTheOldFileAndNoTemporary) {
    TempDir dir;
    Write(dir / "keep.xml", "old text", fs::perms(0644));
    fs::create_directory(dir / "folder");
    fs::create_symlink("loop2", dir / "loop1");
    fs::create_symlink("loop1", dir / "loop2");
    const Listing before = Names(dir.Path());

    EXPECT_FALSE(Replace(dir / "none/f.xml", "x"));
    EXPECT_EQ(CVelFile::GetLastError(), ENOENT);
    EXPECT_FALSE(Replace(dir / "folder", "x"));
    EXPECT_EQ(CVelFile::GetLastError(), EISDIR);
    EXPECT_FALSE(Replace(dir / "loop1", "x"));
    EXPECT_EQ(CVelFile::GetLastError(), ELOOP);

    // The write itself fails part-way: the file size limit holds for root too.
    struct rlimit limit;
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
    const auto oldSignal = signal(SIGXFSZ, SIG_IGN);
    const struct rlimit small = {4, limit.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    EXPECT_FALSE(Replace(dir / "keep.xml", "longer than four bytes"));
    const int error = CVelFile::GetLastError();
    setrlimit(RLIMIT_FSIZE, &limit);
    signal(SIGXFSZ, oldSignal);
    EXPECT_EQ(error, EFBIG);

    if (geteuid() != 0) {  // root writes into any directory and over any file
        fs::permissions(dir / "keep.xml", fs::perms(0444));
        EXPECT_FALSE(Replace(dir / "keep.xml", "x"));
        EXPECT_EQ(CVelFile::GetLastError(), EACCES);
        fs::permissions(dir / "keep.xml", fs::perms(0644));
    }
    EXPECT_EQ(ReadFile(dir / "keep.xml"), "old text");
    EXPECT_TRUE(fs::is_directory(dir / "folder"));
    EXPECT_EQ(Names(dir.Path()), before);
}

// A FIFO (or a device such as /dev/stdout) is written in place, never renamed over.
TEST(ReplaceFile, WritesIntoAFifo) {
    TempDir dir;
    const std::string fifo = dir / "fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    std::string received;
    std::thread reader([&] { received = ReadFile(fifo); });
    EXPECT_TRUE(Replace(fifo, "through the pipe"));
    reader.join();
    EXPECT_EQ(received, "through the pipe");
    EXPECT_TRUE(fs::is_fifo(fifo));
}

// Replace, as a user who may not write into directories of others (root may).
bool ReplaceUnprivileged(const std::string& path, const std::string& text) {
    if (geteuid() != 0) return Replace(path, text);
    const pid_t child = fork();
    if (child == 0) _exit(setresuid(65534, 65534, 65534) == 0 && Replace(path, text) ? 0 : 1);
    int status = -1;
    return waitpid(child, &status, 0) == child && status == 0;
}

ino_t Inode(const std::string& path) {
    struct stat info {};
    EXPECT_EQ(stat(path.c_str(), &info), 0);
    return info.st_ino;
}

// A rename would give the file a new inode: its other names would keep the old text, and
// only a privileged process could give it back its owner.
TEST(ReplaceFile, KeepsHardLinksAndOwnersByWritingInPlace) {
    TempDir dir;
    Write(dir / "a.xml", "old", fs::perms(0666));
    fs::create_hard_link(dir / "a.xml", dir / "b.xml");
    const ino_t inode = Inode(dir / "a.xml");
    ASSERT_TRUE(Replace(dir / "a.xml", "shared"));
    EXPECT_EQ(ReadFile(dir / "b.xml"), "shared");
    EXPECT_EQ(Inode(dir / "a.xml"), inode);

    if (geteuid() != 0) GTEST_SKIP() << "needs root to make a file of another owner";
    fs::remove(dir / "b.xml");
    fs::permissions(dir.Path(), fs::perms(0777));
    // Root keeps any owner through the rename; another user cannot and writes in place.
    ASSERT_EQ(chown((dir / "a.xml").c_str(), 4321, 4321), 0);
    ASSERT_TRUE(Replace(dir / "a.xml", "root's"));
    EXPECT_TRUE(ReplaceUnprivileged(dir / "a.xml", "nobody's"));
    struct stat info {};
    ASSERT_EQ(stat((dir / "a.xml").c_str(), &info), 0);
    EXPECT_EQ(info.st_uid, 4321u);
    EXPECT_EQ(info.st_gid, 4321u);
    EXPECT_EQ(ReadFile(dir / "a.xml"), "nobody's");
    EXPECT_EQ(Names(dir.Path()), Listing{"a.xml"});
}

// Where no temporary can be made beside the file, but the file itself may be written, it is
// written in place.
TEST(ReplaceFile, WritesInPlaceWhereNoTemporaryCanBeMade) {
    TempDir dir;
    const std::string longName = dir / std::string(250, 'n');
    ASSERT_TRUE(Replace(longName, "new"));
    ASSERT_TRUE(Replace(longName, "replaced"));
    EXPECT_EQ(ReadFile(longName), "replaced");

    fs::permissions(dir.Path(), fs::perms(0755));
    fs::create_directory(dir / "closed");
    Write(dir / "closed/open.xml", "old", fs::perms(0666));
    fs::permissions(dir / "closed", fs::perms(0555));
    EXPECT_TRUE(ReplaceUnprivileged(dir / "closed/open.xml", "written in place"));
    EXPECT_FALSE(ReplaceUnprivileged(dir / "closed/new.xml", "x"));
    fs::permissions(dir / "closed", fs::perms(0755));
    EXPECT_EQ(ReadFile(dir / "closed/open.xml"), "written in place");
    EXPECT_EQ(Names(dir / "closed"), Listing{"open.xml"});
}

TEST(Path, ExtractsDirectoriesAndJoinsRelativePaths) {
    EXPECT_EQ(vel::ExtractFilePath("/data/xml/doc.xml"), "/data/xml/");
    EXPECT_EQ(vel::ExtractFilePath("/doc.xml"), "/");
    EXPECT_EQ(vel::ExtractFilePath("doc.xml"), "");
    EXPECT_EQ(vel::MakeFullPath("/abs/a.dtd", "/data/"), "/abs/a.dtd");
    EXPECT_EQ(vel::MakeFullPath("sub/a.dtd", "/data/"), "/data/sub/a.dtd");
    EXPECT_EQ(vel::MakeFullPath("a.dtd", "/data"), "/data/a.dtd");
    EXPECT_EQ(vel::MakeFullPath("a.dtd", ""), "a.dtd");
}

}  // namespace
