#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <string>

#include "platform/PlatformTestUtil.h"
#include "vx/platform/File.h"
#include "vx/platform/Path.h"

namespace {

using platform_test::TempDir;
using vel::CVelFile;

TEST(File, ReadOpenAcceptsOnlyExistingRegularFiles) {
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
}

TEST(File, ReadsExactlyTheRequestedBytes) {
    TempDir dir;
    const std::string name = dir / "data";
    CVelFile file;
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
