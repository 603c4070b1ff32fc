#include "engine/assets/manager/AssetManager.h"
#include "engine/assets/registry/AssetReference.h"
#include "engine/core/files/Files.h"
#include "engine/core/files/Paths.h"
#include "engine/core/files/TemporaryFile.h"
#include "engine/core/logging/AccessWarning.h"
#include "engine/core/text/TextWriter.h"
#include "engine/reflection/SchemaCodec.h"
#include "engine/reflection/SchemaRecordText.h"
#include "engine/scene/Hierarchy.h"
#include "engine/scene/Scene.h"
#include "engine/scene/entities/CoreComponents.h"
#include "engine/scene/files/SceneFile.h"
#include "engine/scene/files/SceneStage.h"
#include "engine/scene/registration/EntityRecordStage.h"
#include "engine/scene/registration/MissingComponents.h"

#include <new>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>

namespace Vornu::Scene
{
namespace
{

/// A text as `std::quoted` writes it.
void WriteQuoted(Core::TextWriter& out, std::string_view text)
{
    char* const begin = out.Reserve(2 * text.size() + 2);
    char* at = begin;
    *at++ = '"';
    for (const char c : text)
    {
        if (c == '"' || c == '\\')
        {
            *at++ = '\\';
        }
        *at++ = c;
    }
    *at++ = '"';
    out.Commit(static_cast<std::size_t>(at - begin));
}

void WriteGuid(Core::TextWriter& out, const Core::Guid& guid)
{
    out.Append('"');
    if (guid.IsValid())
    {
        guid.WriteText(out.Reserve(Core::Guid::kTextLength));
        out.Commit(Core::Guid::kTextLength);
    }
    out.Append('"');
}

class SceneWriter
{
public:
    SceneWriter(const Scene& scene, const Assets::AssetRegistry& assets, Core::TextWriter& out)
        : scene_(scene), assets_(assets), out_(out)
    {
    }

    void Write()
    {
        out_.Append("scene_version 6\n");
        CheckEntities();
        const Reflection::SchemaCodecContext codec = Assets::MakeSceneCodecContext(assets_);
        WriteEnvironment(codec);
        const auto components = table_.ComponentsIn(scene_);
        auto parent = parents_.begin(); // one for each saved entity, in order
        for (const Entity entity : scene_.AliveEntities())
        {
            if (IsSaved(entity))
            {
                WriteEntity(entity, (*parent).second, components, codec);
                ++parent;
            }
        }
        for (const std::string& name : superseded_)
        {
            ReportSupersededRecords(name);
        }
    }

private:
    bool IsSaved(Entity entity) const { return !scene_.Has<TransientComponent>(entity); }

    /// Every entity is checked before the first is written.
    void CheckEntities()
    {
        for (const Entity entity : scene_.AliveEntities())
        {
            if (IsSaved(entity))
            {
                CheckEntity(entity);
            }
        }
        ValidateHierarchy(parents_);
    }

    void CheckEntity(Entity entity)
    {
        const auto* const name = scene_.TryGet<NameComponent>(entity);
        const auto* const identity = scene_.TryGet<EntityGuidComponent>(entity);
        if (name == nullptr || identity == nullptr || !scene_.Has<TransformComponent>(entity))
        {
            throw std::runtime_error("Cannot save an entity missing its name, GUID, or transform.");
        }
        if (!identity->guid.IsValid())
        {
            throw std::runtime_error("Cannot save an entity with a null GUID.");
        }
        if (name->name.find('\n') != std::string::npos)
        {
            throw std::runtime_error("Cannot save an entity name that holds a line feed.");
        }
        RequireFrame(table_, scene_, entity);
        if (!parents_.Emplace(identity->guid, ParentGuid(entity)).second)
        {
            throw std::runtime_error("Cannot save duplicate entity GUIDs.");
        }
    }

    Core::Guid ParentGuid(Entity entity) const
    {
        const auto* const hierarchy = scene_.TryGet<HierarchyComponent>(entity);
        if (hierarchy == nullptr || hierarchy->parent == kNullEntity)
        {
            return {};
        }
        const auto* const parent = scene_.IsValid(hierarchy->parent)
                                       ? scene_.TryGet<EntityGuidComponent>(hierarchy->parent)
                                       : nullptr;
        if (parent == nullptr)
        {
            throw std::runtime_error("Cannot save an entity with a missing parent.");
        }
        return parent->guid;
    }

    void WriteEnvironment(const Reflection::SchemaCodecContext& codec)
    {
        Reflection::SchemaArena arena;
        const Reflection::SchemaRecord record =
            Reflection::CaptureObject(Reflection::ViewOf(scene_.GetEnvironment()),
                                      Reflection::ReflectionRegistry::Instance(), codec, arena);
        Reflection::WriteSchemaRecord(out_, record);
    }

    void WriteEntity(Entity entity, const Core::Guid& parentGuid,
                     std::span<const ComponentTypeEntry* const> components,
                     const Reflection::SchemaCodecContext& codec)
    {
        out_.Append("entity ");
        WriteGuid(out_, scene_.Get<EntityGuidComponent>(entity).guid);
        out_.Append(' ');
        WriteQuoted(out_, scene_.Get<NameComponent>(entity).name);
        out_.Append("\nparent ");
        WriteGuid(out_, parentGuid);
        out_.Append('\n');
        WriteRecords(components, {&scene_, entity, &codec, &assets_, &table_, &superseded_});
        out_.Append("end_entity\n");
    }

    /// Records go to the text at once. Where that fails the save is lost, but its words are those of records
    /// that are all made before the first is written.
    void WriteRecords(std::span<const ComponentTypeEntry* const> components,
                      const ComponentSaveContext& context)
    {
        const std::uint64_t start = out_.Position();
        try
        {
            SaveEntity(components, context, written_);
            written_.clear();
            return;
        }
        catch (const std::bad_alloc&)
        {
            throw;
        }
        catch (const std::exception&)
        {
            const bool isRewound = out_.Rewind(start);
            if (!out_.Good())
            {
                throw std::runtime_error("Failed to write component schema.");
            }
            ComponentTypeEntry::RecordList records;
            SaveEntity(components, context, records);
            for (const Reflection::SchemaRecord& record : records)
            {
                Reflection::WriteSchemaRecord(out_, record);
            }
            if (!isRewound)
            {
                throw;
            }
        }
    }

    const Scene& scene_;
    const Assets::AssetRegistry& assets_;
    Core::TextWriter& out_;
    Core::OrderedMap<Core::Guid, Core::Guid, Core::GuidHash> parents_;
    const ComponentRecordTable table_;
    ComponentTypeEntry::RecordList written_{out_};
    std::set<std::string, std::less<>> superseded_;
};

void WriteAndReplace(Platform::TemporaryFile& file, const std::filesystem::path& target, const Scene& scene,
                     const Assets::AssetRegistry& assets, const SaveOptions& options)
{
    Core::TextWriter out([&file](std::string_view text) { return file.Write(text); });
    SceneWriter(scene, assets, out).Write();
    if (!out.Flush())
    {
        throw std::runtime_error("Failed to finish writing scene file.");
    }
    if (!file.Close())
    {
        throw std::runtime_error("Failed to close scene file.");
    }
    const Platform::FileResult result =
        Platform::ReplaceFileAtomically(file.Path(), target, true, options.mayReplace);
    if (!result.Succeeded())
    {
        throw std::runtime_error("Failed to replace scene file: " + result.message);
    }
    Core::WarnIfNarrowed(result, target);
}

/// Writes a temporary file beside the target and moves it there. False when it can't be opened.
bool SaveBeside(const std::filesystem::path& path, const Scene& scene, const Assets::AssetRegistry& assets,
                const SaveOptions& options)
{
    const std::optional<std::filesystem::path> target = Platform::FollowLinks(path);
    if (!target)
    {
        return false;
    }
    std::filesystem::path temporary = *target;
    temporary += ".save-" + Core::Guid::Generate().ToString() + ".tmp";
    Platform::TemporaryFile file(temporary, *target, options.limit);
    if (!file.IsOpen())
    {
        return false;
    }
    WriteAndReplace(file, *target, scene, assets, options);
    return true;
}

} // namespace

bool SaveScene(const std::filesystem::path& path, const Scene& scene, Assets::AssetManager& assets,
               std::string* error, const SaveOptions& options)
{
    std::string message;
    try
    {
        if (!SaveBeside(path, scene, assets.GetRegistry(), options))
        {
            message = "Failed to open scene file for writing.";
        }
    }
    catch (const std::exception& fault)
    {
        message = std::string("Failed to save scene: ") + fault.what();
    }
    const bool saved = message.empty();
    if (error != nullptr)
    {
        *error = std::move(message);
    }
    return saved;
}

} // namespace Vornu::Scene
