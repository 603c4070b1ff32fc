#include "tools/upgrade/VerifyRoundTrip.h"

#include "engine/core/Guid.h"
#include "engine/core/files/InputFile.h"
#include "engine/core/system/Signals.h"
#include "engine/core/system/System.h"
#include "engine/scene/Scene.h"
#include "engine/scene/files/SceneFile.h"

#include <cstddef>
#include <memory>
#include <string_view>
#include <system_error>
#include <utility>

namespace Vornu::Upgrade
{
namespace
{

/// A file that is deleted at the end of its scope, and by a fatal signal.
class ScratchFile
{
public:
    explicit ScratchFile(std::filesystem::path path)
        : path_(std::move(path)), slot_(Platform::RegisterTemporaryPath(path_.c_str()))
    {
    }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;
    ~ScratchFile()
    {
        std::error_code ignored; // a file that can't be deleted changes no result
        std::filesystem::remove(path_, ignored);
        Platform::ReleaseTemporaryPath(slot_);
    }

    const std::filesystem::path& Path() const noexcept { return path_; }

private:
    std::filesystem::path path_;
    int slot_;
};

bool HaveSameBytes(const std::filesystem::path& a, const std::filesystem::path& b)
{
    constexpr std::size_t kBlockSize = std::size_t{256} * 1024;
    Core::InputFile first(a);
    Core::InputFile second(b);
    if (!first.IsOpen() || !second.IsOpen())
    {
        return false;
    }
    const auto block = std::make_unique_for_overwrite<char[]>(2 * kBlockSize);
    for (;;)
    {
        const std::string_view mine(block.get(), first.Read(block.get(), kBlockSize));
        const std::string_view theirs(block.get() + kBlockSize,
                                      second.Read(block.get() + kBlockSize, kBlockSize));
        if (mine != theirs || mine.size() < kBlockSize)
        {
            return mine == theirs && !first.Failed() && !second.Failed();
        }
    }
}

} // namespace

bool VerifyRoundTrip(const std::filesystem::path& path, Assets::AssetManager& assets, std::string& error)
{
    const std::filesystem::path base =
        Platform::TempDirectoryPath() / ("vornu-upgrade-verify-" + Core::Guid::Generate().ToString());
    // The copies stand where others may come by.
    const Scene::SaveOptions saving{{}, {0600, {}}};
    const ScratchFile firstFile(base.native() + ".a.vscene");
    const ScratchFile secondFile(base.native() + ".b.vscene");
    {
        Scene::Scene first;
        if (!Scene::LoadScene(path, first, assets, &error) ||
            !Scene::SaveScene(firstFile.Path(), first, assets, &error, saving))
        {
            return false;
        }
    }
    {
        Scene::Scene second;
        if (!Scene::LoadScene(firstFile.Path(), second, assets, &error) ||
            !Scene::SaveScene(secondFile.Path(), second, assets, &error, saving))
        {
            return false;
        }
    }
    if (!HaveSameBytes(firstFile.Path(), secondFile.Path()))
    {
        error = "load/save round trip is not stable";
        return false;
    }
    return true;
}

} // namespace Vornu::Upgrade
