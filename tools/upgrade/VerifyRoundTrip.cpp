#include "tools/upgrade/VerifyRoundTrip.h"

#include "engine/core/Files.h"
#include "engine/core/Guid.h"
#include "engine/core/Signals.h"
#include "engine/core/System.h"
#include "engine/scene/Scene.h"
#include "engine/scene/SceneFile.h"

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
    const Platform::FileContents first = Platform::ReadFileBinary(a);
    const Platform::FileContents second = Platform::ReadFileBinary(b);
    return first.result.Succeeded() && second.result.Succeeded() && first.bytes == second.bytes;
}

} // namespace

bool VerifyRoundTrip(const std::filesystem::path& path, Assets::AssetManager& assets, std::string& error)
{
    const std::filesystem::path base =
        Platform::TempDirectoryPath() / ("vornu-upgrade-verify-" + Core::Guid::Generate().ToString());
    const ScratchFile firstFile(base.native() + ".a.vscene");
    const ScratchFile secondFile(base.native() + ".b.vscene");
    {
        Scene::Scene first;
        if (!Scene::LoadScene(path, first, assets, &error) ||
            !Scene::SaveScene(firstFile.Path(), first, assets, &error))
        {
            return false;
        }
    }
    {
        Scene::Scene second;
        if (!Scene::LoadScene(firstFile.Path(), second, assets, &error) ||
            !Scene::SaveScene(secondFile.Path(), second, assets, &error))
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
