#include "engine/scene/files/SceneVersionProbe.h"

#include "tests/core/TestFolder.h"

#include <gtest/gtest.h>

#include <string>

namespace Vornu::Scene
{
namespace
{

using Test::TestFolder;

std::string Probe(const std::filesystem::path& path)
{
    const SceneVersionProbe probe = ProbeSceneVersion(path);
    return probe.found ? std::to_string(probe.version) : "none " + std::to_string(probe.version);
}

TEST(SceneVersionProbe, TheFirstLineThatIsNoCommentDecides)
{
    const TestFolder folder;
    const std::pair<std::string, std::string> rows[] = {
        {"scene_version 6", "6"},
        {"#\r\n\r\n\n# scene_version 1\n\tscene_version\t3\r\n", "3"},
        {"scene_version 6 trailing", "6"},
        {"scene_version 2x", "2"},
        {"scene_version 4294967295", "4294967295"},
        {"scene_version 4294967296", "none 0"},
        {"scene_version", "none 0"},
        {"scene_version x", "none 0"},
        {"scene_versions 6", "none 0"},
        {" \nscene_version 6", "none 0"},
        {"entity\nscene_version 6", "none 0"},
        {std::string(100, '\0'), "none 0"},
        {"", "none 0"},
    };
    for (const auto& [text, expected] : rows)
    {
        EXPECT_EQ(Probe(folder.Write("a.vscene", text)), expected) << text;
    }
    EXPECT_EQ(Probe(folder / "missing"), "none 0");
    EXPECT_EQ(Probe(folder.Path()), "none 0");
}

} // namespace
} // namespace Vornu::Scene
