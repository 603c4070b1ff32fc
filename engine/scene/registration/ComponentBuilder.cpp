#include "engine/scene/registration/ComponentBuilder.h"

namespace Vornu::Scene::Detail
{

ComponentTypeEntry& AddPlainEntry(Reflection::TypeId type, const std::string& typeName,
                                  const std::string& displayName, const std::string& category,
                                  ComponentFlags flags)
{
    // First, since it refuses a name that is taken.
    Reflection::ReflectionRegistry::Instance().RegisterType(type, typeName, displayName, category, 1);
    ComponentTypeEntry& entry = ComponentRegistry::Instance().AddEntry(type);
    entry.typeName = typeName;
    entry.displayName = displayName;
    entry.category = category;
    entry.flags = flags;
    entry.addable = HasFlag(flags, ComponentFlags::UserAddable);
    entry.persistent = HasFlag(flags, ComponentFlags::Serialized);
    entry.records = {{typeName, false}};
    return entry;
}

void AddSaveGameField(ComponentTypeEntry& entry, SaveGameField field)
{
    for (const SaveGameField& known : entry.saveGame.fields)
    {
        if (known.name == field.name)
        {
            throw std::invalid_argument("Duplicate save-game field: " + entry.typeName + "." + field.name);
        }
    }
    entry.saveGame.fields.push_back(std::move(field));
}

void AddLayoutRow(ComponentTypeEntry& entry, ComponentLayoutRow row)
{
    if (entry.fields.empty())
    {
        entry.fields.reserve(8);
    }
    entry.fields.push_back(std::move(row));
}

void AddReplicatedField(ComponentTypeEntry& entry, ReplicatedField field)
{
    if (field.path.empty())
    {
        throw std::invalid_argument("Replicated field path is empty: " + entry.typeName);
    }
    for (const ReplicatedField& known : entry.replicatedFields)
    {
        if (known.path == field.path)
        {
            throw std::invalid_argument("Field replicated twice: " + entry.typeName + "." + field.path);
        }
    }
    entry.replicatedFields.push_back(std::move(field));
}

} // namespace Vornu::Scene::Detail
