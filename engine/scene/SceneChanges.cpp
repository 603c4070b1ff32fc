#include "engine/scene/Scene.h"

namespace Vornu::Scene
{

void Scene::ChangeTrack::Mark(Entity entity)
{
    ++revision;
    entityRevisions.Set(entity, revision);
}

void Scene::ChangeTrack::MarkAll()
{
    ++revision;
    fullResetRevision = revision;
    entityRevisions.Clear();
}

SceneChangeSet Scene::ChangeTrack::ChangesSince(std::uint64_t since) const
{
    SceneChangeSet changes;
    changes.fullRebuild = since == 0 || since < fullResetRevision;
    changes.revision = revision;
    if (!changes.fullRebuild && since < revision)
    {
        changes.entities = entityRevisions.ChangedAfter(since);
    }
    return changes;
}

void Scene::DirtyList::Add(Entity entity)
{
    const std::uint32_t index = EntityIndex(entity);
    if (index >= places.size())
    {
        places.resize(index + std::size_t{1}, 0);
    }
    const std::uint32_t place = places[index];
    if (place != 0 && place <= entities.size() && EntityIndex(entities[place - 1]) == index)
    {
        if (entities[place - 1] == entity)
        {
            return;
        }
        entities[place - 1] = kNullEntity;
    }
    entities.push_back(entity);
    places[index] = static_cast<std::uint32_t>(entities.size());
}

void Scene::DirtyList::Clear()
{
    entities.clear();
}

void Scene::MarkTransformChanged(Entity entity)
{
    tracking_.transforms.Mark(entity);
    if (tracking_.worldUpdateAllDirty)
    {
        return;
    }
    if (HasTransform(entity))
    {
        tracking_.worldDirty.Add(entity);
    }
    else
    {
        tracking_.worldUpdateAllDirty = true;
        tracking_.worldDirty.Clear();
    }
}

void Scene::MarkStateChanged(Entity entity)
{
    tracking_.states.Mark(entity);
}

void Scene::MarkAllTransformsChanged()
{
    tracking_.transforms.MarkAll();
    tracking_.worldUpdateAllDirty = true;
    tracking_.worldDirty.Clear();
}

void Scene::MarkAllStateChanged()
{
    tracking_.states.MarkAll();
}

void Scene::MarkEverythingChanged()
{
    MarkAllTransformsChanged();
    MarkAllStateChanged();
    ++tracking_.sceneRevision;
}

void Scene::MarkLoaded()
{
    MarkAllTransformsChanged();
    ++tracking_.sceneRevision;
}

SceneChangeSet Scene::TransformChangesSince(std::uint64_t revision) const
{
    SceneChangeSet changes = tracking_.transforms.ChangesSince(revision);
    KeepTopMost(changes.entities);
    return changes;
}

SceneChangeSet Scene::StateChangesSince(std::uint64_t revision) const
{
    return tracking_.states.ChangesSince(revision);
}

SceneChangeSet Scene::TakeDirtyTransformRoots()
{
    SceneChangeSet changes;
    changes.fullRebuild = tracking_.worldUpdateAllDirty;
    changes.revision = tracking_.transforms.revision;
    if (!changes.fullRebuild)
    {
        changes.entities = tracking_.worldDirty.entities;
        KeepTopMost(changes.entities);
    }
    tracking_.worldUpdateAllDirty = false;
    tracking_.worldDirty.Clear();
    return changes;
}

void Scene::KeepTopMost(std::vector<Entity>& entities) const
{
    std::erase_if(entities, [this](Entity entity) { return !HasTransform(entity); });
    marks_.Begin(SlotCount());
    for (const Entity entity : entities)
    {
        marks_.Set(entity, EntityMarks::Mark::Yes);
    }
    std::erase_if(entities, [this](Entity entity) { return HasMarkedAncestor(entity); });
}

bool Scene::HasMarkedAncestor(Entity entity) const
{
    EntityMarks::Mark found = EntityMarks::Mark::No;
    chain_.clear();
    for (Entity current = GetParent(entity); IsValid(current); current = GetParent(current))
    {
        if (const EntityMarks::Mark mark = marks_.Get(current); mark != EntityMarks::Mark::None)
        {
            found = mark;
            break;
        }
        // Also ends a walk that comes round to its own trail.
        marks_.Set(current, EntityMarks::Mark::No);
        chain_.push_back(current);
    }
    if (found == EntityMarks::Mark::Yes)
    {
        // Whatever comes past these entities later has a marked ancestor as well.
        for (const Entity passed : chain_)
        {
            marks_.Set(passed, EntityMarks::Mark::Yes);
        }
    }
    return found == EntityMarks::Mark::Yes;
}

} // namespace Vornu::Scene
