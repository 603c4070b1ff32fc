#include "engine/scene/legacy/LegacyReader.h"

#include "engine/assets/manager/AssetManager.h"
#include "engine/assets/registry/AssetReference.h"
#include "engine/core/files/InputFile.h"
#include "engine/core/text/LineReader.h"
#include "engine/core/text/TokenReader.h"
#include "engine/reflection/SchemaCodec.h"
#include "engine/reflection/SchemaRecordText.h"
#include "engine/scene/Scene.h"
#include "engine/scene/components/Environment.h"
#include "engine/scene/files/LoadFault.h"
#include "engine/scene/legacy/Records.h"
#include "engine/scene/legacy/SceneAssembly.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace Vornu::Scene::Legacy
{
namespace
{

constexpr std::string_view kRecordOnlyWords[] = {
    "property", "object_property", "array_property", "end_component_schema",
    "value",    "object",          "array",          "end_array"};

/// Keywords that have no positional form in version 6.
constexpr std::string_view kNamedOnlyWords[] = {"transform", "camera", "point_light", "rotator"};

bool IsOneOf(std::string_view word, std::span<const std::string_view> words)
{
    return std::find(words.begin(), words.end(), word) != words.end();
}

using EntityRecordReader = void (*)(RecordLine& line, RecordContext& context);

/// The reader of an entity's record; null for a keyword that isn't known.
EntityRecordReader FindEntityRecord(std::string_view keyword)
{
    static const auto table = []
    {
        std::unordered_map<std::string_view, EntityRecordReader> readers;
        for (const auto records :
             {CoreRecords(), RenderingRecords(), LightRecords(), AnimatorRecords(), PhysicsRecords(),
              BuoyancyRecords(), ClothRecords(), TerrainRecords(), OceanRecords(), GameplayRecords(),
              NavigationRecords(), SplineRecords(), EffectRecords(), ScriptRecords()})
        {
            for (const EntityRecord& record : records)
            {
                readers.emplace(record.keyword, record.read);
            }
        }
        return readers;
    }();
    const auto found = table.find(keyword);
    return found == table.end() ? nullptr : found->second;
}

const EnvironmentRecord* FindEnvironmentRecord(std::string_view keyword)
{
    for (const EnvironmentRecord& record : EnvironmentRecords())
    {
        if (record.keyword == keyword)
        {
            return &record;
        }
    }
    return nullptr;
}

/// Reads the lines of a file into a scene assembly.
class LineLoop
{
public:
    LineLoop(Core::LineReader& source, Assets::AssetManager& assets, const ComponentRecordTable& table,
             const ComponentLoadContext& context, SceneAssembly& scene)
        : source_(source), assets_(assets), table_(table), context_(context), scene_(scene)
    {
    }

    std::uint64_t LineNumber() const noexcept { return lineNumber_; }

    void Read()
    {
        std::string_view line;
        while (source_.ReadLine(line))
        {
            ++lineNumber_;
            if (line.empty() || line.front() == '#')
            {
                continue;
            }
            Core::TokenReader tokens(line);
            const std::string_view keyword = tokens.ReadWord();
            if (!keyword.empty())
            {
                Dispatch(line, keyword, tokens);
                previousRecordEnd_ = source_.Position();
            }
        }
        if (scene_.version < kNamedRecordsVersion)
        {
            CloseEntity(); // the last one may lack its end in these versions
        }
    }

    bool IsInEntity() const noexcept { return entity_.has_value(); }

private:
    void Dispatch(std::string_view line, std::string_view keyword, const Core::TokenReader& tokens)
    {
        if (keyword == "scene_version")
        {
            return ReadHeader(tokens);
        }
        if (scene_.version == 0)
        {
            throw std::runtime_error("Scene records require a version header.");
        }
        if (IsOneOf(keyword, kRecordOnlyWords))
        {
            throw std::runtime_error("Schema property or terminator outside a schema record.");
        }
        if (keyword == Reflection::kRecordWord)
        {
            return ReadSchemaBlock(line, keyword);
        }
        const EnvironmentRecord* const environment = FindEnvironmentRecord(keyword);
        if (scene_.version == kNamedRecordsVersion)
        {
            CheckNamedVersion(keyword, environment);
        }
        RecordLine record(tokens, assets_.GetRegistry());
        if (environment != nullptr)
        {
            return environment->read(record, scene_.environment);
        }
        ReadEntityLine(keyword, record);
    }

    void ReadHeader(Core::TokenReader tokens)
    {
        if (scene_.version != 0)
        {
            throw std::runtime_error("Duplicate or misplaced scene header.");
        }
        std::int32_t version = 0;
        if (!tokens.Read(version))
        {
            throw std::runtime_error("Malformed scene version.");
        }
        if (!tokens.Rest().empty())
        {
            throw std::runtime_error("Trailing scene version data.");
        }
        if (version < 1 || version > static_cast<std::int32_t>(kNamedRecordsVersion))
        {
            throw LoadFault("Unsupported scene format version.");
        }
        scene_.version = static_cast<std::uint32_t>(version);
    }

    void CheckNamedVersion(std::string_view keyword, const EnvironmentRecord* environment)
    {
        if (IsOneOf(keyword, kNamedOnlyWords))
        {
            throw std::runtime_error("Version 6 requires a named component schema for " +
                                     std::string(keyword));
        }
        if (environment == nullptr)
        {
            return;
        }
        if (entity_)
        {
            throw std::runtime_error("Environment records must be outside entities.");
        }
        if (namedEnvironmentSeen_ || !environmentKeys_.insert(environment->key).second)
        {
            throw std::runtime_error("Duplicate or mixed environment records.");
        }
    }

    void ReadEntityLine(std::string_view keyword, RecordLine& line)
    {
        if (keyword == "entity")
        {
            return BeginEntity(line);
        }
        if (keyword == "end_entity")
        {
            return EndEntity();
        }
        if (!entity_)
        {
            return; // files hold records of entities there that older tools had dropped
        }
        if (keyword == "parent")
        {
            return ReadParent(line);
        }
        if (const EntityRecordReader read = FindEntityRecord(keyword))
        {
            RecordContext record{scene_.version, *entity_, assets_, keyword, fill_};
            read(line, record);
        }
    }

    void BeginEntity(RecordLine& line)
    {
        const bool strict = scene_.version == kNamedRecordsVersion;
        if (strict && entity_)
        {
            throw std::runtime_error("Missing entity terminator.");
        }
        std::string identifier;
        std::string name;
        if (!line.Read(identifier, name))
        {
            throw std::runtime_error("Malformed entity header.");
        }
        const std::optional<Core::Guid> guid = Core::Guid::TryParse(identifier);
        if (strict && !(guid && guid->IsValid()))
        {
            throw std::runtime_error("Malformed or null entity GUID.");
        }
        if (strict && !line.Rest().empty())
        {
            throw std::runtime_error("Trailing entity header data.");
        }
        CloseEntity();
        entity_.emplace(table_, context_);
        entity_->guid = guid ? *guid : Core::GuidFromName(identifier + name);
        entity_->name = std::move(name);
    }

    void CloseEntity()
    {
        if (entity_)
        {
            scene_.Add(*entity_);
            entity_.reset();
        }
    }

    void EndEntity()
    {
        const bool strict = scene_.version == kNamedRecordsVersion;
        if (entity_)
        {
            entity_->recordStage.Finish(strict);
        }
        else if (strict)
        {
            throw std::runtime_error("Entity is missing its Transform schema or opening record.");
        }
        CloseEntity();
    }

    void ReadParent(RecordLine& line)
    {
        PendingEntity& entity = *entity_;
        const bool strict = scene_.version == kNamedRecordsVersion;
        if (strict && !entity.AddNamedRecord("parent"))
        {
            throw std::runtime_error("Duplicate parent record.");
        }
        std::string text;
        const bool present = static_cast<bool>(line.Read(text));
        const std::optional<Core::Guid> guid = Core::Guid::TryParse(text);
        if (strict && (!present || (!text.empty() && !(guid && guid->IsValid()))))
        {
            throw std::runtime_error("Malformed parent GUID.");
        }
        if (strict && !line.Rest().empty())
        {
            throw std::runtime_error("Trailing parent data.");
        }
        if (!text.empty())
        {
            entity.parentGuid = guid ? *guid : Core::GuidFromName(text);
        }
    }

    void ReadSchemaBlock(std::string_view line, std::string_view keyword)
    {
        if (scene_.version < kNamedRecordsVersion || (entity_ && entity_->scripts.open))
        {
            throw std::runtime_error("Schema requires scene version 6 and cannot appear inside a script.");
        }
        if (line.size() > Reflection::kMaxLineSize)
        {
            throw std::runtime_error("Schema header exceeds the record limit.");
        }
        arena_.Reset();
        const auto keywordEnd = static_cast<std::size_t>(keyword.data() + keyword.size() - line.data());
        Reflection::SchemaRecord record =
            Reflection::ReadSchemaRecord(line.substr(keywordEnd), source_, lineNumber_, arena_, false);
        if (record.name == "EnvironmentSettings")
        {
            return ApplyEnvironment(record);
        }
        if (!entity_)
        {
            throw std::runtime_error("Component schema requires an entity.");
        }
        PendingEntity& entity = *entity_;
        if (record.name == "ScriptComponentRecord" && entity.scripts.seen)
        {
            throw std::runtime_error(kMixedScripts);
        }
        entity.AddNamedRecord(record.name == "Transform" ? "TransformComponent" : record.name);
        entity.recordStage.Load(record, source_.Position() - previousRecordEnd_);
    }

    void ApplyEnvironment(const Reflection::SchemaRecord& record)
    {
        if (entity_)
        {
            throw std::runtime_error("Environment schema must be outside entities.");
        }
        if (namedEnvironmentSeen_ || !environmentKeys_.empty())
        {
            throw std::runtime_error("Duplicate or mixed environment records.");
        }
        Reflection::ApplyRecord(record, Reflection::ViewOf(scene_.environment),
                                Reflection::ReflectionRegistry::Instance(), *context_.codec);
        namedEnvironmentSeen_ = true;
    }

    Core::LineReader& source_;
    Assets::AssetManager& assets_;
    const ComponentRecordTable& table_;
    const ComponentLoadContext& context_;
    SceneAssembly& scene_;
    Reflection::SchemaArena arena_;       // of the schema record at hand
    std::optional<PendingEntity> entity_; // the last one opened and not yet ended
    std::uint64_t lineNumber_ = 0;
    std::uint64_t previousRecordEnd_ = 0;
    FillBudget fill_;
    bool namedEnvironmentSeen_ = false;
    std::set<std::string_view> environmentKeys_;
};

void ReadFile(const std::filesystem::path& path, Scene& target, Assets::AssetManager& assets)
{
    Core::InputFile file(path);
    if (!file.IsOpen())
    {
        throw LoadFault("Failed to open scene file for reading.");
    }
    const Assets::AssetRegistry& registry = assets.GetRegistry();
    const Reflection::SchemaCodecContext codec = Assets::MakeSceneCodecContext(registry);
    const ComponentRecordTable table;
    const ComponentLoadContext context{&codec, &registry};

    SceneAssembly assembly(target, table, assets);
    Core::LineReader source(file);
    LineLoop loop(source, assets, table, context, assembly);
    try
    {
        loop.Read();
    }
    catch (const LoadFault&)
    {
        throw;
    }
    catch (const std::exception& fault)
    {
        throw LoadFault("Failed to parse scene file at line " + std::to_string(loop.LineNumber()) + ": " +
                        fault.what());
    }
    if (assembly.version == 0)
    {
        throw LoadFault("Scene file is missing a valid header.");
    }
    if (source.Failed() || (assembly.version == kNamedRecordsVersion && loop.IsInEntity()))
    {
        throw LoadFault("Scene read failed or entity terminator is missing.");
    }
    target = assembly.Finish();
}

} // namespace

bool Load(const std::filesystem::path& path, Scene& scene, Assets::AssetManager& assets, std::string* error)
{
    return CatchLoadFaults(error, [&] { ReadFile(path, scene, assets); });
}

} // namespace Vornu::Scene::Legacy
