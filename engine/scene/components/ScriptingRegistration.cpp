#include "engine/scene/components/Registration.h"

#include "engine/assets/registry/AssetReference.h"
#include "engine/core/text/NumberText.h"
#include "engine/scene/components/ScriptComponents.h"
#include "engine/scene/components/ScriptValues.h"
#include "engine/scene/registration/ComponentBuilder.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <variant>

namespace Vornu::Scene
{

namespace
{

constexpr std::size_t kMaxBytes = Reflection::kMaxRecordSize;

/// Measures a component before any of it is turned into text.
class ScriptBudget
{
public:
    void AddEntries(std::size_t count)
    {
        if (count > Reflection::kMaxElements)
        {
            throw std::runtime_error("Script collection exceeds its array limit.");
        }
        Add(entries_, count, Reflection::kMaxFieldSum);
    }
    void AddBytes(std::size_t count) { Add(bytes_, count, kMaxBytes); }

private:
    static void Add(std::size_t& total, std::size_t count, std::size_t limit)
    {
        total += count;
        if (total > limit)
        {
            throw std::runtime_error("Script authoring data exceeds its record budget.");
        }
    }

    std::size_t entries_ = 0;
    std::size_t bytes_ = 0;
};

void Measure(const ScriptComponent& component)
{
    ScriptBudget budget;
    budget.AddEntries(component.scripts.size());
    for (const ScriptAttachment& script : component.scripts)
    {
        budget.AddBytes(script.assemblyName.size());
        budget.AddBytes(script.namespaceName.size());
        budget.AddBytes(script.className.size());
        for (const auto* const fields : {&script.serializedFields, &script.unknownFields})
        {
            budget.AddEntries(fields->size());
            for (const ScriptField& field : *fields)
            {
                budget.AddBytes(field.fieldName.size());
                const auto* const text = std::get_if<std::string>(&field.value);
                budget.AddBytes(text != nullptr ? text->size() : 0);
            }
        }
    }
}

/// A field may hold the id of an asset as text; a file never does, as the next process numbers its assets
/// anew.
std::string StoredText(const ScriptField& field, const Assets::AssetRegistry* assets)
{
    std::string text = FormatScriptValue(field.type, field.value);
    if (field.type != ScriptFieldType::AssetReference || assets == nullptr)
    {
        return text;
    }
    const std::optional<std::uint64_t> id = Core::ParseIntegerText<std::uint64_t>(text);
    std::string reference =
        id && std::to_string(*id) == text ? Assets::FormatAssetReference(*assets, *id) : "";
    return reference.empty() ? text : reference;
}

std::vector<ScriptFieldRecord> ToRecords(const std::vector<ScriptField>& fields,
                                         const Assets::AssetRegistry* assets)
{
    std::vector<ScriptFieldRecord> records;
    records.reserve(fields.size());
    for (const ScriptField& field : fields)
    {
        records.push_back({field.fieldId, field.fieldName, field.type, StoredText(field, assets)});
    }
    return records;
}

std::vector<ScriptField> FromRecords(std::vector<ScriptFieldRecord>&& records)
{
    std::vector<ScriptField> fields;
    fields.reserve(records.size());
    for (ScriptFieldRecord& record : records)
    {
        ScriptValue value = ParseScriptValue(record.type, record.value);
        fields.push_back({record.fieldId, std::move(record.fieldName), record.type, std::move(value)});
    }
    return fields;
}

void SaveScripts(const ScriptComponent& component, const ComponentSaveContext& context,
                 ComponentTypeEntry::RecordList& out)
{
    Measure(component);
    ScriptComponentRecord record;
    for (const ScriptAttachment& script : component.scripts)
    {
        record.scripts.push_back({{script},
                                  ToRecords(script.serializedFields, context.assets),
                                  ToRecords(script.unknownFields, context.assets)});
    }
    CaptureInto(record, context, out);
}

/// The defaults of a stored field's type and value fit no script, so both must be there.
void RequireTypesAndValues(Reflection::SchemaRecord& script)
{
    for (const char* const list : {"serializedFields", "unknownFields"})
    {
        script.ForEachRecord(
            list,
            [](const Reflection::SchemaRecord& field)
            {
                if (field.FindField("type") == nullptr || field.FindField("value") == nullptr)
                {
                    throw std::runtime_error("Script variant requires explicit type and value fields.");
                }
            });
    }
}

void LoadScripts(ComponentLoadValue<ScriptComponent>& state, const Reflection::SchemaRecord& record,
                 std::uint64_t, const ComponentLoadContext& context)
{
    Reflection::SchemaRecord scripts = record;
    scripts.ForEachRecord("scripts", &RequireTypesAndValues);
    auto stored = ApplyFresh<ScriptComponentRecord>(record, context);
    for (ScriptAttachmentRecord& script : stored.scripts)
    {
        state.value.scripts.push_back({{script},
                                       FromRecords(std::move(script.serializedFields)),
                                       FromRecords(std::move(script.unknownFields))});
    }
}

void RemapScripts(ScriptComponent& component, const EntityReferenceRemapper& remapper)
{
    for (ScriptAttachment& script : component.scripts)
    {
        for (auto* const fields : {&script.serializedFields, &script.unknownFields})
        {
            for (ScriptField& field : *fields)
            {
                if (auto* const guid = std::get_if<Core::Guid>(&field.value))
                {
                    remapper.RemapGuid(*guid);
                }
            }
        }
    }
}

} // namespace

void RegisterScriptingComponents()
{
    Reflection::RegisterEnum<ScriptFieldType>("ScriptFieldType",
                                              {
                                                  {ScriptFieldType::Bool, "Bool"},
                                                  {ScriptFieldType::Int32, "Int32"},
                                                  {ScriptFieldType::UInt32, "UInt32"},
                                                  {ScriptFieldType::Int64, "Int64"},
                                                  {ScriptFieldType::Float, "Float"},
                                                  {ScriptFieldType::Double, "Double"},
                                                  {ScriptFieldType::String, "String"},
                                                  {ScriptFieldType::Vector2, "Vector2"},
                                                  {ScriptFieldType::Vector3, "Vector3"},
                                                  {ScriptFieldType::Vector4, "Vector4"},
                                                  {ScriptFieldType::Quaternion, "Quaternion"},
                                                  {ScriptFieldType::Color, "Color"},
                                                  {ScriptFieldType::EntityReference, "EntityReference"},
                                                  {ScriptFieldType::AssetReference, "AssetReference"},
                                                  {ScriptFieldType::Enum, "Enum"},
                                              });

    Reflection::RegisterValue<ScriptFieldRecord>("ScriptFieldRecord", "ScriptFieldRecord", "Serialization")
        .Field("fieldId", &ScriptFieldRecord::fieldId)
        .Field("fieldName", &ScriptFieldRecord::fieldName)
        .Field("type", &ScriptFieldRecord::type, Label("Type"))
        .Field("value", &ScriptFieldRecord::value);

    Reflection::RegisterValue<ScriptAttachmentRecord>("ScriptAttachmentRecord", "ScriptAttachmentRecord",
                                                      "Serialization")
        .Field("attachmentId", &ScriptAttachmentRecord::attachmentId)
        .Field("typeId", &ScriptAttachmentRecord::typeId)
        .Field("assemblyName", &ScriptAttachmentRecord::assemblyName)
        .Field("namespaceName", &ScriptAttachmentRecord::namespaceName)
        .Field("className", &ScriptAttachmentRecord::className)
        .Field("enabled", &ScriptAttachmentRecord::enabled)
        .Field("executionOrder", &ScriptAttachmentRecord::executionOrder)
        .Field("missingScript", &ScriptAttachmentRecord::missingScript)
        .Field("serializedFields", &ScriptAttachmentRecord::serializedFields)
        .Field("unknownFields", &ScriptAttachmentRecord::unknownFields);

    Reflection::RegisterValue<ScriptComponentRecord>("ScriptComponentRecord", "ScriptComponentRecord",
                                                     "Serialization")
        .Field("scripts", &ScriptComponentRecord::scripts);

    RegisterComponent<ScriptComponent>("ScriptComponent", "Script Component", "Scripting", kAddable)
        .Description("Hosts one or more C# script attachments.")
        .AddCustom(&ScriptComponent::scripts)
        .Records({{"ScriptComponentRecord", false}}, &SaveScripts, &LoadScripts)
        .OnRemap(&RemapScripts);
}

} // namespace Vornu::Scene
