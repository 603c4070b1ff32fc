#include "engine/assets/manager/ModelImporter.h"

#include "engine/core/system/System.h"

#include <algorithm>
#include <mutex>
#include <stdexcept>
#include <utility>

namespace Vornu::Assets
{
namespace
{

struct ImporterSlot
{
    std::mutex mutex;
    std::shared_ptr<const ModelImporterFunction> importer;
};

ImporterSlot& Slot()
{
    static ImporterSlot slot;
    return slot;
}

struct DerivedKind
{
    AssetKind kind;
    const char* folder;
    const char* extension;
    const char* word;
};

constexpr DerivedKind kDerivedKinds[] = {
    {AssetKind::Mesh, "Meshes", ".mesh", "Mesh"},
    {AssetKind::Material, "Materials", ".material", "Material"},
    {AssetKind::Skeleton, "Skeletons", ".vskel", "Skeleton"},
    {AssetKind::Rig, "Rigs", ".vrig", "Rig"},
    {AssetKind::AnimationClip, "Animations", ".vclip", "Clip"},
    {AssetKind::AnimatorController, "Controllers", ".vcontroller", "Controller"},
};

bool IsPlain(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '-';
}

std::string CleanName(std::string_view name, const char* word)
{
    std::string clean(name);
    std::replace_if(
        clean.begin(), clean.end(), [](char c) { return !IsPlain(c); }, '_');
    clean.erase(0, clean.find_first_not_of('_'));
    return clean.empty() ? word : clean;
}

} // namespace

void SetModelImporter(ModelImporterFunction importer)
{
    std::shared_ptr<const ModelImporterFunction> shared;
    if (importer)
    {
        shared = std::make_shared<const ModelImporterFunction>(std::move(importer));
    }
    ImporterSlot& slot = Slot();
    const std::lock_guard lock(slot.mutex);
    slot.importer.swap(shared); // the old one goes once the lock is free
}

std::shared_ptr<const ModelImporterFunction> ModelImporter()
{
    ImporterSlot& slot = Slot();
    const std::lock_guard lock(slot.mutex);
    return slot.importer;
}

ImportedSceneData ImportModel(const std::filesystem::path& path)
{
    const auto importer = ModelImporter();
    if (!importer)
    {
        throw std::runtime_error(
            "No model importer is registered in this program (source importers are authoring-only): " +
            path.native());
    }
    return (*importer)(path);
}

std::filesystem::path DerivedChildPath(const std::filesystem::path& source, AssetKind kind,
                                       std::string_view name, std::size_t index, bool create)
{
    const auto* const derived = std::find_if(std::begin(kDerivedKinds), std::end(kDerivedKinds),
                                             [kind](const DerivedKind& entry) { return entry.kind == kind; });
    if (derived == std::end(kDerivedKinds))
    {
        return {};
    }
    std::filesystem::path base = source.parent_path();
    if (base.filename() == "Scene")
    {
        base = base.parent_path();
    }
    const std::filesystem::path folder = base / derived->folder;
    if (create)
    {
        Platform::CreateDirectories(folder);
    }
    return folder / (std::to_string(index) + "_" + CleanName(name, derived->word) + derived->extension);
}

} // namespace Vornu::Assets
