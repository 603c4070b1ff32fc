#include "engine/core/text/LineReader.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace Vornu::Core
{
namespace
{

std::vector<std::string> Lines(LineReader reader)
{
    std::vector<std::string> lines;
    std::string_view line;
    while (reader.ReadLine(line))
    {
        lines.emplace_back(line);
    }
    EXPECT_FALSE(reader.Failed());
    return lines;
}

class LineReaderFile : public testing::Test
{
protected:
    void Write(const std::string& content) { std::ofstream(path_, std::ios::binary) << content; }
    void TearDown() override { std::filesystem::remove(path_); }

    std::filesystem::path path_ = std::filesystem::temp_directory_path() / "vornu-line-reader-test.txt";
};

TEST_F(LineReaderFile, MemoryAndFileGiveTheSameLines)
{
    const std::string longLine(200'000, 'x');
    const std::vector<std::pair<std::string, std::vector<std::string>>> rows = {
        {"", {}},
        {"\n", {""}},
        {"a", {"a"}},
        {"a\n", {"a"}},
        {"a\r\n\r\nb\r", {"a", "", "b"}},
        {"a\rb\r\r\n", {"a\rb\r"}},
        {std::string("\0\n\0", 3), {std::string(1, '\0'), std::string(1, '\0')}},
        {longLine + "\n" + longLine + "y", {longLine, longLine + "y"}},
    };
    for (const auto& [text, expected] : rows)
    {
        EXPECT_EQ(Lines(LineReader(text)), expected);
        Write(text);
        InputFile file(path_);
        EXPECT_EQ(Lines(LineReader(file)), expected);
    }
}

TEST_F(LineReaderFile, PositionCountsTheBytesOfTheFile)
{
    std::string text;
    for (int i = 0; i < 30'000; ++i)
    {
        text += std::to_string(i) + (i % 3 == 0 ? "\r\n" : "\n");
    }
    Write(text);
    InputFile file(path_);
    LineReader fromFile(file);
    LineReader fromMemory(text);
    std::string_view fileLine;
    std::string_view memoryLine;
    while (fromMemory.ReadLine(memoryLine))
    {
        ASSERT_TRUE(fromFile.ReadLine(fileLine));
        ASSERT_EQ(fileLine, memoryLine);
        ASSERT_EQ(fromFile.Position(), fromMemory.Position());
    }
    EXPECT_EQ(fromFile.Position(), text.size());
}

TEST_F(LineReaderFile, KeptLinesStayUntilTheyAreReleased)
{
    std::string text;
    for (int i = 0; i < 200'000; ++i)
    {
        text += "line " + std::to_string(i) + "\n";
    }
    Write(text);
    InputFile file(path_);
    LineReader reader(file, LineReader::Lines::UntilRelease);
    std::vector<std::string_view> lines;
    std::string_view line;
    for (int i = 0; reader.ReadLine(line); ++i)
    {
        lines.push_back(line);
        if (i % 50'000 == 49'999)
        {
            for (std::size_t j = 0; j < lines.size(); ++j)
            {
                ASSERT_EQ(lines[j],
                          "line " + std::to_string(static_cast<std::size_t>(i) + 1 - lines.size() + j));
            }
            lines.clear();
            reader.ReleaseLines();
        }
    }
    EXPECT_EQ(reader.Position(), text.size());
}

TEST(LineReader, AReadErrorIsNotTheEnd)
{
    InputFile folder(std::filesystem::temp_directory_path());
    ASSERT_TRUE(folder.IsOpen());
    LineReader reader(folder);
    std::string_view line;
    EXPECT_FALSE(reader.ReadLine(line));
    EXPECT_TRUE(reader.Failed());
    EXPECT_FALSE(InputFile("/nonexistent/file").IsOpen());
}

} // namespace
} // namespace Vornu::Core
