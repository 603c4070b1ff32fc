#include "engine/assets/registry/AssetReference.h"
#include "engine/core/text/NumberText.h"
#include "engine/scene/legacy/Records.h"
#include "engine/scene/legacy/StrictNumbers.h"

#include <array>
#include <limits>
#include <optional>
#include <string>

namespace Vornu::Scene::Legacy
{
namespace
{

/// The text as a GUID, or one made from a name where it is none.
Core::Guid GuidOr(std::string_view text, std::string_view name)
{
    const std::optional<Core::Guid> guid = Core::Guid::TryParse(text);
    return guid ? *guid : Core::GuidFromName(name);
}

std::vector<float> SplitNumbers(std::string_view text)
{
    std::vector<float> numbers;
    while (!text.empty())
    {
        const std::size_t comma = text.find(',');
        const std::string_view item = text.substr(0, comma);
        if (!item.empty())
        {
            numbers.push_back(StrictFloat(item));
        }
        text.remove_prefix(comma == std::string_view::npos ? text.size() : comma + 1);
    }
    return numbers;
}

/// The first numbers of a comma list; zero when there are too few.
template<class Vector>
Vector VectorOf(std::string_view text)
{
    const std::vector<float> numbers = SplitNumbers(text);
    Vector vector(0.0f);
    if (numbers.size() >= static_cast<std::size_t>(Vector::length()))
    {
        for (typename Vector::length_type i = 0; i < Vector::length(); ++i)
        {
            vector[i] = numbers[static_cast<std::size_t>(i)];
        }
    }
    return vector;
}

/// The list is x, y, z, w; the identity when it is too short.
glm::quat QuaternionOf(std::string_view text)
{
    const std::vector<float> numbers = SplitNumbers(text);
    return numbers.size() >= 4 ? glm::quat(numbers[3], numbers[0], numbers[1], numbers[2])
                               : glm::quat(1.0f, 0.0f, 0.0f, 0.0f);
}

ScriptValue ValueOf(ScriptFieldType type, const std::string& text)
{
    switch (type)
    {
    case ScriptFieldType::Bool:
        return text == "1" || text == "true" || text == "True" || text == "TRUE";
    case ScriptFieldType::Int32:
    case ScriptFieldType::Enum:
        return StrictInt(text);
    case ScriptFieldType::UInt32:
        return StrictUnsigned(text);
    case ScriptFieldType::Int64:
        return StrictLong(text);
    case ScriptFieldType::Float:
        return StrictFloat(text);
    case ScriptFieldType::Double:
        return StrictDouble(text);
    case ScriptFieldType::String:
    case ScriptFieldType::AssetReference:
        return text;
    case ScriptFieldType::Vector2:
        return VectorOf<glm::vec2>(text);
    case ScriptFieldType::Vector3:
    case ScriptFieldType::Color:
        return VectorOf<glm::vec3>(text);
    case ScriptFieldType::Vector4:
        return VectorOf<glm::vec4>(text);
    case ScriptFieldType::Quaternion:
        return QuaternionOf(text);
    case ScriptFieldType::EntityReference:
        return Core::Guid::TryParse(text).value_or(Core::Guid());
    }
    return 0.0f;
}

/// A number that fits no type stays one that fits none, so that the save names it.
ScriptFieldType TypeOf(std::int32_t number)
{
    constexpr auto kUnknown = std::numeric_limits<std::underlying_type_t<ScriptFieldType>>::max();
    return static_cast<ScriptFieldType>(number < 0 || number > kUnknown ? kUnknown : number);
}

/// The scripts that a record of the family changes.
PendingScripts& ScriptsOf(RecordContext& context)
{
    RefuseNamedRecord(context, "ScriptComponentRecord",
                      "Legacy script records cannot modify a named script component.");
    context.entity.scripts.seen = true;
    return context.entity.scripts;
}

void ReadScript(RecordLine& line, RecordContext& context)
{
    PendingScripts& scripts = ScriptsOf(context);
    std::string attachmentId;
    std::string typeId;
    ScriptAttachment script;
    line.Read(attachmentId, typeId, script.assemblyName, script.namespaceName, script.className,
              script.enabled, script.executionOrder, script.missingScript);
    const std::string typeKey =
        script.namespaceName.empty() ? script.className : script.namespaceName + "." + script.className;
    script.attachmentId = GuidOr(attachmentId, typeKey + ":attachment");
    script.typeId = GuidOr(typeId, typeKey);
    scripts.scripts.push_back(std::move(script));
    scripts.open = true;
}

void ReadScriptField(RecordLine& line, RecordContext& context)
{
    PendingScripts& scripts = ScriptsOf(context);
    if (!scripts.open)
    {
        return;
    }
    bool isUnknown = false;
    std::string fieldId;
    std::int32_t type = 0;
    std::string text;
    ScriptField field;
    line.Read(isUnknown, fieldId, field.fieldName, type, text);
    field.fieldId = GuidOr(fieldId, field.fieldName);
    field.type = TypeOf(type);
    field.value = ValueOf(field.type, text);
    ScriptAttachment& script = scripts.scripts.back();
    (isUnknown ? script.unknownFields : script.serializedFields).push_back(std::move(field));
}

void EndScript(RecordLine&, RecordContext& context)
{
    ScriptsOf(context).open = false;
}

constexpr std::array kRecords = {
    EntityRecord{"script", &ReadScript},
    EntityRecord{"script_field", &ReadScriptField},
    EntityRecord{"end_script", &EndScript},
};

/// The id of the asset that a field names, in decimal; text that names none stays.
void CompleteReference(std::string& text, const Assets::AssetRegistry& assets)
{
    const std::optional<std::uint64_t> number = Core::ParseIntegerText<std::uint64_t>(text);
    const Assets::AssetId id =
        number ? Assets::ResolveLegacyAssetId(assets, *number) : Assets::ResolveAssetReference(assets, text);
    if (id != 0)
    {
        text = std::to_string(id);
    }
}

} // namespace

std::span<const EntityRecord> ScriptRecords() noexcept
{
    return kRecords;
}

void CompleteScripts(std::vector<ScriptAttachment>& scripts, const Assets::AssetRegistry& assets)
{
    for (ScriptAttachment& script : scripts)
    {
        for (auto* const fields : {&script.serializedFields, &script.unknownFields})
        {
            for (ScriptField& field : *fields)
            {
                auto* const text = std::get_if<std::string>(&field.value);
                if (field.type == ScriptFieldType::AssetReference && text != nullptr && !text->empty())
                {
                    CompleteReference(*text, assets);
                }
            }
        }
    }
}

} // namespace Vornu::Scene::Legacy
