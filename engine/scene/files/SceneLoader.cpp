#include "engine/assets/cooked/CookedContainer.h"
#include "engine/assets/cooked/CookedManifest.h"
#include "engine/assets/manager/AssetManager.h"
#include "engine/assets/registry/AssetReference.h"
#include "engine/core/files/Files.h"
#include "engine/core/files/InputFile.h"
#include "engine/reflection/SchemaCodec.h"
#include "engine/scene/Hierarchy.h"
#include "engine/scene/Scene.h"
#include "engine/scene/components/Environment.h"
#include "engine/scene/entities/CoreComponents.h"
#include "engine/scene/files/CookedScene.h"
#include "engine/scene/files/LoadFault.h"
#include "engine/scene/files/SceneFile.h"
#include "engine/scene/files/SceneStage.h"
#include "engine/scene/registration/EntityRecordStage.h"
#include "engine/scene/registration/MissingComponents.h"

#include <cstddef>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Vornu::Scene
{
namespace
{

/// Where a fault stands: its line in a text scene, the number of its entity in a cooked one.
std::string FaultAt(std::uint32_t line, std::size_t entity, const std::exception& fault)
{
    if (line != 0)
    {
        return "Failed to parse scene file at line " + std::to_string(line) + ": " + fault.what();
    }
    return "Failed to load cooked scene entity " + std::to_string(entity) + ": " + fault.what();
}

/// Makes the new scene beside the target while the file is read, so that no more than one record is held at a
/// time. The faults of the steps are held back: a fault of the text, wherever it stands, comes
/// before one of the environment, that before one of an entity's records, that before one of the GUIDs and
/// the hierarchy, that before one of the making.
class SceneBuilder final : public SceneSink
{
public:
    SceneBuilder(const Scene& target, const Assets::AssetRegistry& assets)
        : codec_(Assets::MakeSceneCodecContext(assets)), context_{&codec_, &assets, &missing_}
    {
        scene_.InheritGenerations(target);
    }

    bool KeepsRecords() const override { return false; }
    Reflection::SchemaArena& Arena() override { return arena_; }

    void TakeEnvironment(Reflection::SchemaRecord& record) override
    {
        try
        {
            Reflection::ApplyRecord(record, Reflection::ViewOf(environment_),
                                    Reflection::ReflectionRegistry::Instance(), codec_);
        }
        catch (const std::exception& fault)
        {
            environmentFault_ = std::string("Failed to load scene environment: ") + fault.what();
        }
        arena_.Reset();
    }

    void TakeRecord(StagedRecord& staged) override
    {
        HoldRecordFault(staged.line, [&] { components_.Load(staged.record, staged.encodedBytes); });
        arena_.Reset();
    }

    Reflection::ReadText TakeRecordText(std::string_view headerRest, std::string_view text) override
    {
        return recordFault_.empty() ? components_.LoadText(headerRest, text) : Reflection::ReadText();
    }

    void TakeEntity(StagedEntity& entity) override
    {
        HoldRecordFault(entity.line, [&] { components_.Finish(true); });
        if (recordFault_.empty() && !hasDuplicates_)
        {
            TakeIdentity(entity);
        }
        components_.Clear();
        ++entityCount_;
    }

    /// The finished scene, when everything has been read.
    Scene Finish()
    {
        if (!environmentFault_.empty())
        {
            throw LoadFault(environmentFault_);
        }
        missing_.Send();
        if (!recordFault_.empty())
        {
            throw LoadFault(recordFault_);
        }
        if (hasDuplicates_)
        {
            throw std::runtime_error("Scene contains duplicate entity GUIDs.");
        }
        if (!makingFault_.empty())
        {
            ValidateHierarchy(unmade_);
            throw std::runtime_error(makingFault_);
        }
        LinkParents();
        scene_.SetEnvironment(std::move(environment_));
        for (const Entity entity : entities_)
        {
            ResolveEntity(table_.ResolveOrder(), scene_, entity);
        }
        scene_.MarkLoaded();
        return std::move(scene_);
    }

private:
    /// Runs a step of the components' load, which ends with its first fault.
    template<class Step>
    void HoldRecordFault(std::uint32_t line, Step step)
    {
        if (!recordFault_.empty())
        {
            return;
        }
        try
        {
            step();
        }
        catch (const std::exception& fault)
        {
            recordFault_ = FaultAt(line, entityCount_, fault);
        }
    }

    void TakeIdentity(StagedEntity& staged)
    {
        if (makingFault_.empty())
        {
            hasDuplicates_ = scene_.FindEntityByGuid(staged.guid) != kNullEntity;
            if (!hasDuplicates_)
            {
                AddEntity(staged);
            }
            return;
        }
        hasDuplicates_ = !unmade_.Emplace(staged.guid, staged.parentGuid).second;
    }

    /// Behind an entity that couldn't be made, identities are only noted, to be checked.
    void HoldMakingFault(const StagedEntity& staged, const std::exception& fault)
    {
        makingFault_ = fault.what();
        for (std::size_t i = 0; i < entities_.size(); ++i)
        {
            unmade_.Emplace(scene_.Get<EntityGuidComponent>(entities_[i]).guid, parentGuids_[i]);
        }
        unmade_.Emplace(staged.guid, staged.parentGuid);
    }

    void AddEntity(StagedEntity& staged)
    {
        try
        {
            const Entity entity = scene_.CreateEntity(std::move(staged.name), staged.guid);
            components_.Commit(scene_, entity);
            entities_.push_back(entity);
            parentGuids_.push_back(staged.parentGuid);
        }
        catch (const std::exception& fault)
        {
            HoldMakingFault(staged, fault);
        }
    }

    void LinkParents()
    {
        std::vector<std::uint32_t> positions(scene_.SlotCount());
        for (std::uint32_t i = 0; i < entities_.size(); ++i)
        {
            positions[EntityIndex(entities_[i])] = i;
        }
        std::vector<std::uint32_t> parents(entities_.size(), kNoParent);
        for (std::size_t i = 0; i < entities_.size(); ++i)
        {
            if (parentGuids_[i].IsValid())
            {
                const Entity parent = scene_.FindEntityByGuid(parentGuids_[i]);
                parents[i] = parent != kNullEntity ? positions[EntityIndex(parent)] : kMissingParent;
            }
        }
        ValidateHierarchy(parents);
        for (std::size_t i = 0; i < entities_.size(); ++i)
        {
            if (parents[i] != kNoParent)
            {
                scene_.LinkNewChild(entities_[i], entities_[parents[i]]);
            }
        }
    }

    Reflection::SchemaCodecContext codec_;
    MissingComponentReport missing_;
    ComponentLoadContext context_;
    ComponentRecordTable table_;
    EntityRecordStage components_{table_, context_}; // of the entity that is being read
    Reflection::SchemaArena arena_;                  // of the records that are being read
    EnvironmentSettings environment_;
    Scene scene_;
    std::vector<Entity> entities_; // in file order
    std::vector<Core::Guid> parentGuids_;
    std::size_t entityCount_ = 0;
    std::string environmentFault_;
    std::string recordFault_;
    std::string makingFault_;
    bool hasDuplicates_ = false;
    ParentMap unmade_; // of all entities, where one of them couldn't be made
};

bool BeginsCooked(Core::InputFile& file)
{
    char magic[4] = {};
    const std::size_t count = file.Read(magic, sizeof magic);
    file.Rewind();
    return std::string_view(magic, count) == Assets::kContainerMagic;
}

Scene LoadCooked(const std::filesystem::path& path, const Scene& target,
                 const Assets::AssetRegistry& registry)
{
    const Platform::FileContents contents = Platform::ReadFileBinary(path);
    if (!contents.result.Succeeded())
    {
        throw LoadFault("Failed to read cooked scene: " + contents.result.message);
    }
    SceneStage stage;
    std::string error;
    if (!DecodeCookedScene(std::as_bytes(std::span(contents.bytes)), stage, path, error))
    {
        throw LoadFault(error);
    }
    SceneBuilder builder(target, registry);
    if (stage.environment)
    {
        builder.TakeEnvironment(*stage.environment);
    }
    for (StagedEntity& entity : stage.entities)
    {
        for (StagedRecord& record : entity.records)
        {
            builder.TakeRecord(record);
        }
        builder.TakeEntity(entity);
    }
    return builder.Finish();
}

Scene LoadText(const std::filesystem::path& path, Core::InputFile& file, const Scene& target,
               const Assets::AssetRegistry& registry)
{
    if (registry.GetMode() == Assets::AssetMountMode::ReadOnly &&
        Assets::RequiresCookedScenes(registry.GetContentRoot()))
    {
        throw LoadFault(
            "Scene \"" + path.native() +
            "\" is not cooked. This package loads only cooked scenes; cook the project with vornu-cook "
            "or the packager.");
    }
    Core::LineReader lines(file, Core::LineReader::Lines::UntilRelease);
    SceneBuilder builder(target, registry);
    std::string error;
    if (!ReadSceneText(lines, builder, path, error))
    {
        throw LoadFault(error);
    }
    return builder.Finish();
}

void Load(const std::filesystem::path& path, Scene& target, Assets::AssetManager& assets)
{
    Core::InputFile file(path);
    if (!file.IsOpen())
    {
        throw LoadFault("Failed to open scene file for reading.");
    }
    const Assets::AssetRegistry& registry = assets.GetRegistry();
    target = BeginsCooked(file) ? LoadCooked(path, target, registry) : LoadText(path, file, target, registry);
}

} // namespace

bool LoadScene(const std::filesystem::path& path, Scene& target, Assets::AssetManager& assets,
               std::string* error)
{
    return CatchLoadFaults(error, [&] { Load(path, target, assets); });
}

} // namespace Vornu::Scene
