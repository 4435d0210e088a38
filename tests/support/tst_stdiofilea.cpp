#include "support/fileexception.h"
#include "support/stdiofilea.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

TEST(StdioFileA, ReadsLinesOfAnyLength)
{
    QTemporaryDir dir;
    const QString path = dir.filePath("lines.txt");
    const std::string longLine(300, 'x');
    {
        CStdioFileA f;
        ASSERT_TRUE(f.Open(path, "wb"));
        f.WriteString("first\r\n" + longLine + "\n" + std::string(128, 'y') + "\nlast");
    }
    CStdioFileA f;
    ASSERT_TRUE(f.Open(path, "rb"));
    std::string line;
    ASSERT_TRUE(f.ReadString(line));
    EXPECT_EQ(line, "first\r"); // only the line feed is taken off
    ASSERT_TRUE(f.ReadString(line));
    EXPECT_EQ(line, longLine);
    ASSERT_TRUE(f.ReadString(line));
    EXPECT_EQ(line, std::string(128, 'y'));
    ASSERT_TRUE(f.ReadString(line));
    EXPECT_EQ(line, "last");
    EXPECT_FALSE(f.ReadString(line));
}

TEST(StdioFileA, FailedOpenReportsTheFile)
{
    CStdioFileA f;
    EXPECT_FALSE(f.Open("/nonexistent/dir/file.txt", "rb"));
    try {
        f.OpenOrThrow("/nonexistent/dir/file.txt", "rb");
        FAIL() << "no exception";
    } catch (const CFileException &e) {
        EXPECT_EQ(e.m_cause, CFileException::FileNotFound);
        EXPECT_TRUE(e.GetErrorMessage().contains("/nonexistent/dir/file.txt"));
    }
}
