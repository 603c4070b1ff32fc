#include "engine/scene/ComponentBuilder.h"

namespace Vornu::Scene::Detail
{

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
