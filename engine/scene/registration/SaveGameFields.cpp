#include "engine/scene/registration/SaveGameFields.h"

#include "engine/scene/entities/EntityReference.h"
#include "engine/scene/entities/Registry.h"

#include <algorithm>
#include <bit>
#include <stdexcept>

namespace Vornu::Scene
{

void WriteSaveGameValue(Core::ByteWriter& writer, bool value)
{
    writer.WriteU8(value ? 1 : 0);
}

void WriteSaveGameValue(Core::ByteWriter& writer, float value)
{
    writer.WriteU32(std::bit_cast<std::uint32_t>(value));
}

void WriteSaveGameValue(Core::ByteWriter& writer, const glm::vec3& value)
{
    for (glm::vec3::length_type i = 0; i < glm::vec3::length(); ++i)
    {
        WriteSaveGameValue(writer, value[i]);
    }
}

void WriteSaveGameValue(Core::ByteWriter& writer, const std::string& value)
{
    writer.WriteString(value);
}

void WriteSaveGameEntity(Core::ByteWriter& writer, Entity entity, const SaveGameFieldCodecContext& context)
{
    const Core::Guid guid = context.registry != nullptr ? GetGuid(*context.registry, entity) : Core::Guid();
    writer.WriteU64(guid.high);
    writer.WriteU64(guid.low);
}

void ReadSaveGameValue(Core::ByteReader& reader, bool& value)
{
    const std::uint8_t byte = reader.ReadU8();
    if (byte > 1)
    {
        throw std::runtime_error("Malformed save-game bool.");
    }
    value = byte != 0;
}

void ReadSaveGameValue(Core::ByteReader& reader, float& value)
{
    value = std::bit_cast<float>(reader.ReadU32());
}

void ReadSaveGameValue(Core::ByteReader& reader, glm::vec3& value)
{
    for (glm::vec3::length_type i = 0; i < glm::vec3::length(); ++i)
    {
        ReadSaveGameValue(reader, value[i]);
    }
}

void ReadSaveGameValue(Core::ByteReader& reader, std::string& value)
{
    value = reader.ReadString(kMaxSaveGameString);
}

void ReadSaveGameEntity(Core::ByteReader& reader, Entity& entity, const SaveGameFieldCodecContext& context)
{
    Core::Guid guid;
    guid.high = reader.ReadU64();
    guid.low = reader.ReadU64();
    entity = guid.IsValid() && context.registry != nullptr ? context.registry->FindEntityByGuid(guid)
                                                           : kNullEntity;
}

SaveGameFieldSet ComponentSaveGameFields::Capture(const void* component,
                                                  const SaveGameFieldCodecContext& context) const
{
    SaveGameFieldSet set;
    set.version = version;
    set.fields.reserve(fields.size());
    for (const SaveGameField& field : fields)
    {
        Core::ByteWriter writer;
        field.write(component, writer, context);
        set.fields.emplace_back(field.name, writer.TakeBytes());
    }
    return set;
}

void ComponentSaveGameFields::Apply(void* component, const SaveGameFieldSet& set,
                                    const SaveGameFieldCodecContext& context,
                                    std::vector<std::string>* unknown) const
{
    const auto applyAll = [&](void* target)
    {
        for (const auto& [name, bytes] : set.fields)
        {
            const auto field = std::ranges::find(fields, name, &SaveGameField::name);
            if (field == fields.end())
            {
                if (unknown != nullptr)
                {
                    unknown->push_back(name);
                }
                continue;
            }
            Core::ByteReader reader(bytes);
            field->read(target, reader, context);
            if (reader.Remaining() != 0)
            {
                throw std::runtime_error("Save-game field '" + name + "' has trailing bytes.");
            }
        }
    };
    if (applyWrapper)
    {
        applyWrapper(component, applyAll);
    }
    else
    {
        applyAll(component);
    }
}

void ComponentSaveGameFields::BringUpToDate(SaveGameFieldSet& set, const std::string& typeName) const
{
    if (set.version == version)
    {
        return;
    }
    if (set.version == 0 || set.version > version)
    {
        throw std::runtime_error("Save-game state of " + typeName + " has version " +
                                 std::to_string(set.version) + "; this build reads versions 1 to " +
                                 std::to_string(version) + ".");
    }
    if (migrate)
    {
        migrate(set, set.version);
    }
    set.version = version;
}

} // namespace Vornu::Scene
