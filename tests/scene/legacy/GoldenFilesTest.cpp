#include "tests/scene/legacy/LegacyText.h"

#include <gtest/gtest.h>

namespace Vornu::Scene::Legacy
{
namespace
{

const std::filesystem::path kFolder = VORNU_TEST_DATA "/legacy";

std::vector<std::string> FilesInOrder()
{
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(kFolder))
    {
        if (entry.path().extension() == ".vscene")
        {
            files.push_back(entry.path().lexically_relative(kFolder).string());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

class GoldenFiles : public testing::TestWithParam<std::string>
{
};

/// Each file gives the text that stands beside it, and that loads and saves to itself.
TEST_P(GoldenFiles, Convert)
{
    const std::filesystem::path file = kFolder / GetParam();
    const std::string expected = Platform::ReadFileBinary(file.string() + ".expected").bytes;
    ASSERT_FALSE(expected.empty());
    Vornu::Test::LegacyText legacy;
    EXPECT_EQ(legacy.Convert(Platform::ReadFileBinary(file).bytes), expected);
    std::string error;
    EXPECT_TRUE(LoadScene(file.string() + ".expected", legacy.scene, legacy.assets, &error)) << error;
    EXPECT_EQ(legacy.Save(), expected);
}

INSTANTIATE_TEST_SUITE_P(Legacy, GoldenFiles, testing::ValuesIn(FilesInOrder()));

} // namespace
} // namespace Vornu::Scene::Legacy
