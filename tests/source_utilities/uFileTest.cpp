#include "source_utilities/uFile.h"

#include <fcntl.h>

#include <cstring>

#include "tests/source_utilities/TempHome.h"

namespace ZU_WEP {
namespace {

using uFileTest = TempHome;

TEST_F(uFileTest, WritesSeeksAndReads) {
    uFile file("f", "w+");
    char line[32] = {};
    EXPECT_FALSE(file.IsOpen() || file.Flush() || file.WriteString("lost") || file.Close() || file.Erase());
    EXPECT_TRUE(file.IsError());
    ASSERT_TRUE(file.Open());
    EXPECT_EQ(file.Write("one\n", 4), 4U);
    EXPECT_EQ(file.Printf("%d\n", 22), 3);
    std::fpos_t end{};
    EXPECT_TRUE(file.GetPosition(&end));
    EXPECT_TRUE(file.SeekToBegin());
    EXPECT_EQ(file.GetSize(), 7U);
    EXPECT_TRUE(file.ReadString(line, sizeof line));
    EXPECT_STREQ(line, "one\n");
    EXPECT_EQ(file.GetSize(), 3U);
    EXPECT_EQ(file.Read(line, sizeof line), 3U);
    EXPECT_TRUE(file.IsEof() && !file.IsError());
    EXPECT_TRUE(file.SetPosition(&end) && file.WriteString("three") && file.SeekToEnd());
    EXPECT_EQ(file.GetSize(), 0U);
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(Contents("f"), "one\n22\nthree");
    EXPECT_FALSE(file.Open(nullptr, "r") || file.IsOpen() || file.Open());
}

TEST_F(uFileTest, IsNotInheritedAndKeepsTheMode) {
    const char* mode = "a+";
    const int next = open(".", O_RDONLY | O_CLOEXEC);
    close(next);
    uFile file;
    ASSERT_TRUE(file.Open("f", mode));
    EXPECT_EQ(file.GetOpenMode(), mode);
    EXPECT_EQ(fcntl(next, F_GETFD), FD_CLOEXEC);
}

TEST_F(uFileTest, EraseLeavesAnOpenFileEmptyAndWritable) {
    for (const char* mode : {"w+", "a+"}) {
        uFile file;
        ASSERT_TRUE(file.Open("f", mode) && file.WriteString("long text") && file.Erase() && file.IsOpen());
        EXPECT_TRUE(file.WriteString("new") && file.Flush());
        EXPECT_EQ(Contents("f"), "new");
    }
}

TEST_F(uFileTest, FailedCloseStaysOpenWithoutAStream) {
    uFile file;
    ASSERT_TRUE(file.Open("/dev/full", "w") && file.WriteString("x"));
    EXPECT_TRUE(file.Close());
    EXPECT_TRUE(file.IsOpen());
    EXPECT_FALSE(file.WriteString("x") || file.Close());
}

}  // namespace
}  // namespace ZU_WEP
