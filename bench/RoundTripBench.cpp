#include "bench/BenchScenes.h"
#include "bench/JsonReference.h"
#include "engine/assets/manager/AssetManager.h"
#include "engine/scene/Scene.h"
#include "engine/scene/files/SceneFile.h"
#include "tools/upgrade/UpgradeTool.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace Vornu::Bench
{
namespace
{

/// The same tree of entities as a positional scene, as a current one and as JSON, another that names missing
/// assets alone, scenes of next to nothing, and one of a large terrain; with the content that they name.
void MakeFiles(const std::filesystem::path& folder, std::size_t entities)
{
    const ScratchFolder scratch; // where the library keeps its own files
    MakeContent(folder / "Content");
    const std::filesystem::path levels = folder / "Content" / "Levels";
    WriteText(levels / "legacy.vscene", LegacySceneText(entities, Shape::Tree));
    WriteText(levels / "missing.vscene", LegacySceneText(entities, Shape::Tree, References::Missing));
    WriteText(levels / "empty.vscene", LegacySceneText(0, Shape::Tree));
    WriteText(levels / "terrain.vscene", TerrainSceneText());
    MakeCurrentScene(levels / "current.vscene", entities, Shape::Tree);
    MakeCurrentScene(levels / "current_empty.vscene", 0, Shape::Tree);
    WriteText(folder / "scene.json", JsonSceneText(entities, Shape::Tree));
}

/// Many small positional scenes, with the content that they name.
void MakeSmallFiles(const std::filesystem::path& folder, std::size_t count)
{
    constexpr std::size_t kEntities = 20;
    MakeContent(folder / "Content");
    const std::string text = LegacySceneText(kEntities, Shape::Tree);
    for (std::size_t i = 0; i < count; ++i)
    {
        WriteText(folder / "Content" / "Levels" / ("scene" + std::to_string(i) + ".vscene"), text);
    }
}

/// Reads a scene, or JSON with one of the references, and writes it to the target if there is one.
class Work
{
public:
    Work(std::filesystem::path source, std::filesystem::path target)
        : source_(std::move(source)), target_(std::move(target))
    {
        if (!IsJson())
        {
            assets_.Initialize(Upgrade::FindContentFolder(source_), Assets::AssetMountMode::Authoring);
        }
    }

    void Run()
    {
        if (!IsJson())
        {
            RunScene();
        }
        else if (target_.empty())
        {
            LoadJson(source_);
        }
        else
        {
            RoundTripJson(source_, target_);
        }
    }

private:
    bool IsJson() const { return source_.extension() == ".json"; }

    void RunScene()
    {
        Scene::Scene scene;
        std::string error;
        if (!Scene::LoadScene(source_, scene, assets_, &error) ||
            (!target_.empty() && !Scene::SaveScene(target_, scene, assets_, &error)))
        {
            throw std::runtime_error(error);
        }
    }

    std::filesystem::path source_;
    std::filesystem::path target_;
    Assets::AssetManager assets_;
};

/// Prints the nanoseconds of each time.
void Measure(const std::filesystem::path& source, bool save, long times)
{
    const ScratchFolder scratch;
    Work work(source, save ? scratch.File("target") : std::filesystem::path());
    for (long i = 0; i < times; ++i)
    {
        const auto start = std::chrono::steady_clock::now();
        work.Run();
        const std::chrono::nanoseconds taken = std::chrono::steady_clock::now() - start;
        std::printf("%lld\n", static_cast<long long>(taken.count()));
    }
}

} // namespace
} // namespace Vornu::Bench

/// Makes files of one scene, or loads one of them, and saves it to another, a number of times. How many
/// instructions one time takes is the difference between two runs with different numbers of times.
int main(int argc, char** argv)
{
    const std::string_view step = argc == 4 ? argv[1] : "";
    const unsigned long number = argc == 4 ? std::strtoul(argv[3], nullptr, 10) : 0;
    if (step == "make")
    {
        Vornu::Bench::MakeFiles(argv[2], number);
        return 0;
    }
    if (step == "small")
    {
        Vornu::Bench::MakeSmallFiles(argv[2], number);
        return 0;
    }
    if (step == "load" || step == "roundtrip")
    {
        Vornu::Bench::Measure(argv[2], step == "roundtrip", static_cast<long>(number));
        return 0;
    }
    std::fprintf(stderr, "Usage: roundtrip_bench make <folder> <entities>\n"
                         "       roundtrip_bench small <folder> <files>\n"
                         "       roundtrip_bench load|roundtrip <file> <times>\n");
    return 2;
}
