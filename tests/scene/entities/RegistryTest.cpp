#include "engine/scene/entities/Registry.h"

#include "engine/scene/entities/CommandBuffer.h"
#include "engine/scene/entities/CoreComponents.h"
#include "engine/scene/entities/EntityReference.h"
#include "engine/scene/entities/PreservedRecordSet.h"

#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace Vornu::Scene
{
namespace
{

struct Health
{
    int points = 0;
};

struct Owner
{
    std::unique_ptr<int> token;
};

const Core::Guid kGuidA{1, 1};
const Core::Guid kGuidB{2, 2};

template<class Action>
std::string Failure(Action&& action)
{
    try
    {
        action();
    }
    catch (const std::length_error& error)
    {
        return std::string("length: ") + error.what();
    }
    catch (const std::out_of_range& error)
    {
        return std::string("range: ") + error.what();
    }
    catch (const std::logic_error& error)
    {
        return std::string("logic: ") + error.what();
    }
    catch (const std::runtime_error& error)
    {
        return std::string("runtime: ") + error.what();
    }
    return "none";
}

std::vector<Entity> CreateMany(Registry& registry, std::size_t count)
{
    std::vector<Entity> entities;
    for (std::size_t i = 0; i < count; ++i)
    {
        entities.push_back(registry.CreateEntity());
    }
    return entities;
}

TEST(Registry, HoldsBackReleasedIndices)
{
    Registry registry;
    const std::vector<Entity> entities = CreateMany(registry, 1025);
    EXPECT_EQ(entities.front(), 1u);
    EXPECT_EQ(registry.Revision(), 1026u);
    for (std::size_t i = 0; i < 1024; ++i)
    {
        registry.DestroyEntity(entities[i]);
    }
    EXPECT_FALSE(registry.IsValid(1u));
    const Entity fresh = registry.CreateEntity();
    EXPECT_EQ(fresh, 1026u);
    registry.DestroyEntity(entities[1024]);
    EXPECT_EQ(registry.CreateEntity(), Registry::MakeHandle(1, 1));
    EXPECT_EQ(registry.CreateEntity(), 1027u); // 1024 are free again: held back
    registry.DestroyEntity(fresh);
    EXPECT_EQ(registry.CreateEntity(), Registry::MakeHandle(2, 1));
    EXPECT_FALSE(registry.IsValid(1u));
    EXPECT_FALSE(registry.IsValid(Registry::MakeHandle(0, 1)));
    EXPECT_FALSE(registry.IsValid(5000u));
}

TEST(Registry, GenerationWrapsAfter4096Reuses)
{
    Registry registry;
    const Entity first = registry.CreateEntity();
    registry.DestroyEntity(first);
    for (std::uint32_t generation = 1; generation <= 4095; ++generation)
    {
        const Entity entity = Registry::MakeHandle(1, generation);
        ASSERT_TRUE(registry.RestoreEntity(entity, 0));
        ASSERT_FALSE(registry.IsValid(first));
        registry.DestroyEntity(entity);
    }
    ASSERT_TRUE(registry.RestoreEntity(Registry::MakeHandle(1, 4096), 0));
    EXPECT_TRUE(registry.IsValid(first));
}

TEST(Registry, FullTableReusesWhateverIsFreeAndThenThrows)
{
    Registry registry;
    registry.Reserve(Registry::kMaximumSlots);
    const std::vector<Entity> entities = CreateMany(registry, Registry::kMaximumSlots - 1);
    EXPECT_EQ(entities.back(), kEntityIndexMask);
    EXPECT_EQ(Failure([&] { registry.CreateEntity(); }), "length: Entity index space exhausted.");
    EXPECT_EQ(Failure([&] { registry.Defer().CreateEntity(); }), "length: Entity index space exhausted.");
    registry.DestroyEntity(entities[41]);
    EXPECT_EQ(registry.CreateEntity(), Registry::MakeHandle(42, 1));
    registry.Clear();
    EXPECT_EQ(registry.AliveCount(), 0u);
    // Clear releases from the last one to the first.
    EXPECT_EQ(EntityIndex(registry.CreateEntity()), 42u);
    EXPECT_EQ(EntityIndex(registry.CreateEntity()), kEntityIndexMask);
}

TEST(Registry, AliveListKeepsItsOrder)
{
    Registry registry;
    CreateMany(registry, 5);
    const Entity reserved = registry.ReserveEntity();
    registry.DestroyEntity(2);
    registry.DestroyEntity(4);
    EXPECT_EQ(registry.AliveCount(), 3u);
    EXPECT_EQ(registry.AliveEntities(), (std::vector<Entity>{1, 3, 5}));
    EXPECT_FALSE(registry.IsValid(reserved));
    registry.DestroyEntity(reserved);
    registry.CommitReservedEntity(reserved);
    registry.CommitReservedEntity(reserved);
    EXPECT_TRUE(registry.RestoreEntity(4, 1));
    EXPECT_TRUE(registry.RestoreEntity(2, 99));
    EXPECT_EQ(registry.AliveEntities(), (std::vector<Entity>{1, 4, 3, 5, reserved, 2}));
    // Restoring in the middle moved these.
    registry.DestroyEntity(3);
    registry.DestroyEntity(reserved);
    registry.DestroyEntity(4);
    EXPECT_EQ(registry.AliveEntities(), (std::vector<Entity>{1, 5, 2}));
}

TEST(Registry, AliveListAgreesWithAModel)
{
    std::mt19937 random(3);
    Registry registry;
    std::vector<Entity> model;
    std::vector<Entity> destroyed;
    for (int step = 0; step < 20000; ++step)
    {
        const auto choice = random() % 20;
        if (choice < 9 || model.empty())
        {
            model.push_back(registry.CreateEntity());
        }
        else if (choice < 18)
        {
            const auto victim = model.begin() + static_cast<std::ptrdiff_t>(random() % model.size());
            destroyed.push_back(*victim);
            registry.DestroyEntity(*victim);
            model.erase(victim);
        }
        else if (!destroyed.empty())
        {
            const Entity entity = destroyed[random() % destroyed.size()];
            const std::size_t position = random() % (model.size() + 3);
            if (registry.RestoreEntity(entity, position))
            {
                const auto at = std::min(position, model.size());
                model.insert(model.begin() + static_cast<std::ptrdiff_t>(at), entity);
            }
        }
        ASSERT_EQ(registry.AliveCount(), model.size());
        if (random() % 50 == 0)
        {
            ASSERT_EQ(registry.AliveEntities(), model) << step;
        }
    }
}

TEST(Registry, RestoreRaisesTheFloorOfTheSlot)
{
    Registry registry;
    EXPECT_FALSE(registry.RestoreEntity(kNullEntity, 0));
    EXPECT_FALSE(registry.RestoreEntity(1, 0));
    const Entity first = registry.CreateEntity();
    EXPECT_FALSE(registry.RestoreEntity(first, 0));
    registry.DestroyEntity(first);
    EXPECT_FALSE(registry.RestoreEntity(Registry::MakeHandle(1, 2), 0)); // newer than the slot

    ASSERT_TRUE(registry.RestoreEntity(first, 0));
    EXPECT_TRUE(registry.IsValid(first));
    registry.DestroyEntity(first);
    // The slot stands at 1 now. Restoring exactly this generation must not let it be handed out again.
    const Entity second = Registry::MakeHandle(1, 1);
    ASSERT_TRUE(registry.RestoreEntity(second, 0));
    registry.DestroyEntity(second);
    ASSERT_TRUE(registry.RestoreEntity(first, 0));
    registry.DestroyEntity(first);
    EXPECT_FALSE(registry.RestoreEntity(Registry::MakeHandle(1, 3), 0));
    EXPECT_TRUE(registry.RestoreEntity(Registry::MakeHandle(1, 2), 0));
}

TEST(Registry, RestoredIndexLeavesTheFreeQueue)
{
    Registry registry;
    const std::vector<Entity> entities = CreateMany(registry, 1100);
    for (std::size_t i = 0; i < 1030; ++i)
    {
        registry.DestroyEntity(entities[i]);
    }
    ASSERT_TRUE(registry.RestoreEntity(entities[1], 0)); // 1029 free
    EXPECT_EQ(registry.CreateEntity(), Registry::MakeHandle(1, 1));
    EXPECT_EQ(registry.CreateEntity(), Registry::MakeHandle(3, 1));
    for (std::uint32_t index = 4; index <= 6; ++index)
    {
        EXPECT_EQ(registry.CreateEntity(), Registry::MakeHandle(index, 1));
    }
    EXPECT_EQ(registry.CreateEntity(), 1101u);
}

TEST(Registry, AddOverwritesInPlace)
{
    Registry registry;
    const std::vector<Entity> entities = CreateMany(registry, 3);
    for (const Entity entity : entities)
    {
        registry.Add<Health>(entity, {static_cast<int>(entity)});
    }
    const std::uint64_t revision = registry.Revision();
    const std::uint64_t storageRevision = registry.StorageOf<Health>().Revision();
    EXPECT_EQ(storageRevision, 3u);
    registry.Add<Health>(entities[1], {20});
    EXPECT_EQ(registry.Revision(), revision);
    EXPECT_EQ(registry.StorageOf<Health>().Revision(), storageRevision);
    EXPECT_EQ(registry.StorageOf<Health>().Entities(), entities);
    EXPECT_EQ(registry.Get<Health>(entities[1]).points, 20);
}

TEST(Registry, RemovalSwapsTheLastComponentIn)
{
    Registry registry;
    const std::vector<Entity> entities = CreateMany(registry, 4);
    for (const Entity entity : entities)
    {
        registry.Add<Owner>(entity, {std::make_unique<int>(static_cast<int>(entity))});
    }
    registry.Remove<Owner>(entities[0]);
    const Storage<Owner>& storage = registry.StorageOf<Owner>();
    EXPECT_EQ(storage.Entities(), (std::vector<Entity>{4, 2, 3}));
    registry.Remove<Owner>(entities[2]);
    EXPECT_EQ(storage.Entities(), (std::vector<Entity>{4, 2}));
    EXPECT_FALSE(registry.Has<Owner>(entities[0]));
    EXPECT_EQ(*registry.Get<Owner>(entities[3]).token, 4);
    EXPECT_EQ(*registry.Get<Owner>(entities[1]).token, 2);
    const std::uint64_t revision = registry.Revision();
    registry.Remove<Owner>(entities[2]);
    registry.Remove<Health>(entities[2]);
    EXPECT_EQ(registry.Revision(), revision);
    EXPECT_EQ(storage.Revision(), 6u);
    EXPECT_EQ(Failure([&] { storage.Clone(); }), "logic: Component type cannot be copied.");
}

TEST(Registry, NewerGenerationEvictsARecordOfAnOlderOne)
{
    Registry registry;
    const Entity older = Registry::MakeHandle(7, 0);
    const Entity newer = Registry::MakeHandle(7, 1);
    registry.Add<EntityGuidComponent>(older, {kGuidA});
    registry.Add<EntityGuidComponent>(newer, {kGuidA});
    EXPECT_FALSE(registry.Has<EntityGuidComponent>(older));
    EXPECT_EQ(registry.TryGet<EntityGuidComponent>(older), nullptr);
    EXPECT_EQ(registry.StorageOf<EntityGuidComponent>().Entities(), (std::vector<Entity>{newer}));
    EXPECT_EQ(registry.StorageOf<EntityGuidComponent>().Revision(), 3u);
}

TEST(Registry, CloneIsDeep)
{
    Registry registry;
    const Entity entity = registry.CreateEntity();
    registry.Add<Health>(entity, {5});
    const std::unique_ptr<IStorage> clone = registry.StorageOf<Health>().Clone();
    registry.Get<Health>(entity).points = 6;
    registry.Remove<Health>(entity);
    EXPECT_TRUE(clone->Contains(entity));
    EXPECT_EQ(clone->Revision(), 1u);
    EXPECT_EQ(static_cast<Storage<Health>&>(*clone).TryGet(entity)->points, 5);
}

TEST(Registry, GetNamesWhatIsMissing)
{
    struct Never
    {
    };
    Registry registry;
    const Registry& readOnly = registry;
    EXPECT_EQ(Failure([&] { readOnly.Get<Never>(1); }), "runtime: Component storage does not exist.");
    EXPECT_EQ(registry.TryGet<Never>(1), nullptr);
    EXPECT_EQ(readOnly.StorageOf<Never>(), nullptr);
    EXPECT_EQ(Failure([&] { registry.Get<Never>(1); }),
              "range: Entity does not have the requested component.");
    EXPECT_EQ(Failure([&] { readOnly.Get<Never>(1); }),
              "range: Entity does not have the requested component.");
}

TEST(Registry, GuidIndexFollowsTheComponents)
{
    Registry registry;
    const Entity first = registry.CreateEntity();
    const Entity second = registry.CreateEntity();
    registry.Add<EntityGuidComponent>(first, {kGuidA});
    registry.Add<EntityGuidComponent>(second, {kGuidA});
    EXPECT_EQ(registry.FindEntityByGuid(kGuidA), first);
    // A pair that was taken out goes behind the others when it comes back.
    registry.Add<EntityGuidComponent>(first, {kGuidB});
    registry.Add<EntityGuidComponent>(first, {kGuidA});
    EXPECT_EQ(registry.FindEntityByGuid(kGuidA), second);
    registry.Remove<EntityGuidComponent>(second);
    registry.Add<EntityGuidComponent>(second, {kGuidA});
    EXPECT_EQ(registry.FindEntityByGuid(kGuidA), first);
    registry.DestroyEntity(first);
    EXPECT_EQ(registry.FindEntityByGuid(kGuidA), second);
    registry.Add<EntityGuidComponent>(second, {kGuidB});
    EXPECT_EQ(registry.FindEntityByGuid(kGuidA), kNullEntity);
    EXPECT_EQ(registry.FindEntityByGuid(kGuidB), second);
    registry.IndexGuid(second, kGuidA); // stale: the component holds another one
    EXPECT_EQ(registry.FindEntityByGuid(kGuidA), kNullEntity);
    registry.UnindexGuid(second, kGuidA);
    registry.Remove<EntityGuidComponent>(second);
    EXPECT_EQ(registry.FindEntityByGuid(kGuidB), kNullEntity);
    registry.Add<EntityGuidComponent>(second, {});
    EXPECT_EQ(registry.FindEntityByGuid({}), kNullEntity);
}

TEST(Registry, ClearFreesReservedSlotsAndDropsCommands)
{
    Registry registry;
    CreateMany(registry, 3);
    registry.Add<Health>(2, {1});
    registry.Add<Health>(Registry::MakeHandle(900, 3), {1}); // of no alive entity
    registry.SetPreservedRecords(1, std::make_shared<PreservedRecordSet>());
    const Entity reserved = registry.Defer().CreateEntity();
    bool ran = false;
    registry.Defer().Invoke([&ran](Registry&) { ran = true; });
    const std::uint64_t revision = registry.Revision();
    const Storage<Health>* storage = &registry.StorageOf<Health>();
    const std::uint64_t storageRevision = storage->Revision();
    registry.Clear();
    EXPECT_EQ(registry.Revision(), revision + 4);
    EXPECT_EQ(storage->Revision(), storageRevision + 2);
    EXPECT_FALSE(storage->Contains(2));
    EXPECT_TRUE(registry.AliveEntities().empty());
    EXPECT_FALSE(registry.HasPendingCommands());
    registry.FlushCommands();
    EXPECT_FALSE(ran);
    registry.CommitReservedEntity(reserved);
    EXPECT_FALSE(registry.IsValid(reserved));
    EXPECT_EQ(&registry.StorageOf<Health>(), storage);
    EXPECT_TRUE(storage->Entities().empty());
    EXPECT_TRUE(registry.PreservedEntities().empty());
    EXPECT_TRUE(registry.RestoreEntity(reserved, 0)); // was released like any other
    registry.Add<Health>(reserved, {7});
    EXPECT_EQ(registry.Get<Health>(reserved).points, 7);
}

TEST(Registry, InheritedGenerationsOutdateOldHandles)
{
    Registry old;
    CreateMany(old, 4);
    old.DestroyEntity(3);
    old.Add<Health>(1, {});
    old.Add<Health>(2, {});
    Registry fresh;
    const Entity same = fresh.CreateEntity();
    fresh.DestroyEntity(fresh.CreateEntity());
    fresh.DestroyEntity(2);
    fresh.StorageOf<Health>();
    fresh.InheritGenerations(old);
    EXPECT_EQ(fresh.Revision(), 9u);
    EXPECT_EQ(fresh.StorageOf<Health>().Revision(), 3u);
    EXPECT_EQ(fresh.SlotCount(), 5u);

    // The slot in use takes its new generation at its release, the others have it already.
    EXPECT_TRUE(fresh.IsValid(same));
    fresh.DestroyEntity(same);
    for (const Entity entity : {1u, 2u, 3u, 4u})
    {
        EXPECT_FALSE(fresh.IsValid(entity));
        ASSERT_TRUE(fresh.RestoreEntity(Registry::MakeHandle(entity, 1), 0)) << entity;
        EXPECT_FALSE(fresh.IsValid(entity));
    }
    fresh.InheritGenerations(fresh);
    EXPECT_TRUE(fresh.IsValid(Registry::MakeHandle(4, 1)));
}

TEST(Registry, PreservedRecordsGoWithTheirEntity)
{
    Registry registry;
    CreateMany(registry, 3);
    const auto records = std::make_shared<const PreservedRecordSet>();
    for (const Entity entity : {3u, 1u, 2u})
    {
        registry.SetPreservedRecords(entity, records);
    }
    EXPECT_EQ(registry.PreservedEntities(), (std::vector<Entity>{3, 1, 2}));
    EXPECT_EQ(registry.PreservedRecords(1), records);
    registry.DestroyEntity(1);
    registry.SetPreservedRecords(2, nullptr);
    EXPECT_EQ(registry.PreservedRecords(1), nullptr);
    EXPECT_EQ(registry.PreservedEntities(), (std::vector<Entity>{3}));
    EXPECT_EQ(records.use_count(), 2);
}

TEST(Registry, MovingTakesEverythingAlong)
{
    Registry source;
    CreateMany(source, 2);
    source.Add<EntityGuidComponent>(2, {kGuidA});
    CommandBuffer& buffer = source.Defer();
    const Entity reserved = buffer.CreateEntity();
    Registry target;
    CreateMany(target, 9);
    target = std::move(source);
    EXPECT_EQ(target.FindEntityByGuid(kGuidA), 2u);
    const Entity another = buffer.CreateEntity();
    EXPECT_EQ(&target.Defer(), &buffer);
    target.FlushCommands();
    EXPECT_EQ(target.AliveEntities(), (std::vector<Entity>{1, 2, reserved, another}));
    EXPECT_EQ(source.Revision(), 1u);
    EXPECT_EQ(source.CreateEntity(), 1u);
    EXPECT_FALSE(source.Has<EntityGuidComponent>(2));
}

TEST(ComponentTypeIndex, IsGivenOnceATypeOnAnyThread)
{
    struct Early
    {
    };
    struct Late
    {
    };
    std::vector<std::size_t> indices(4);
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < indices.size(); ++i)
    {
        threads.emplace_back([&indices, i] { indices[i] = ComponentTypeIndex<Early>(); });
    }
    for (std::thread& thread : threads)
    {
        thread.join();
    }
    EXPECT_EQ(indices, std::vector<std::size_t>(4, indices[0]));
    const std::size_t before = RegisteredComponentTypes().size();
    EXPECT_EQ(ComponentTypeIndex<Late>(), before);
    EXPECT_EQ(RegisteredComponentTypes().back(), std::type_index(typeid(Late)));
    EXPECT_EQ(RegisteredComponentTypes()[indices[0]], std::type_index(typeid(Early)));
}

TEST(CommandBuffer, CreatesAndDestroysAtTheFlush)
{
    Registry registry;
    const Entity victim = registry.CreateEntity();
    CommandBuffer& buffer = registry.Defer();
    const Entity kept = buffer.CreateEntity();
    const Entity brief = buffer.CreateEntity();
    std::vector<bool> seen;
    buffer.DestroyEntity(brief);
    buffer.Invoke(
        [&](Registry& at)
        {
            seen = {at.IsValid(kept), at.IsValid(brief), at.IsValid(victim)};
            at.Defer().DestroyEntity(victim);
            seen.push_back(at.IsValid(victim));
        });
    buffer.Invoke({});
    EXPECT_TRUE(registry.HasPendingCommands());
    EXPECT_FALSE(registry.IsValid(kept));
    EXPECT_EQ(registry.AliveCount(), 1u);
    registry.FlushCommands();
    EXPECT_EQ(seen, (std::vector<bool>{true, false, true, true}));
    EXPECT_EQ(registry.AliveEntities(), (std::vector<Entity>{kept}));
    EXPECT_FALSE(registry.HasPendingCommands());
    registry.FlushCommands();
}

TEST(CommandBuffer, FailureKeepsWhatThePassRecorded)
{
    Registry registry;
    int later = 0;
    registry.Defer().Invoke([&later](Registry& at)
                            { at.Defer().Invoke([&later](Registry&) { later += 1; }); });
    registry.Defer().Invoke([](Registry&) { throw std::runtime_error("broken"); });
    registry.Defer().Invoke([&later](Registry&) { later += 10; });
    EXPECT_EQ(Failure([&] { registry.FlushCommands(); }), "runtime: broken");
    EXPECT_TRUE(registry.HasPendingCommands());
    registry.FlushCommands();
    EXPECT_EQ(later, 1);
    CommandBuffer unbound;
    EXPECT_EQ(Failure([&] { unbound.CreateEntity(); }),
              "logic: CommandBuffer::CreateEntity requires a buffer obtained from Registry::Defer().");
}

TEST(EntityReference, CachesTheHandleAndKeepsTheGuid)
{
    Registry registry;
    const Entity entity = registry.CreateEntity();
    EXPECT_EQ(MakeEntityReference(registry, entity).entity, kNullEntity);
    registry.Add<EntityGuidComponent>(entity, {kGuidA});
    EXPECT_EQ(GetGuid(registry, entity), kGuidA);
    EntityReference reference = MakeEntityReference(registry, entity);
    EXPECT_EQ(reference.guid, kGuidA);
    EXPECT_EQ(reference.entity, entity);

    // A second holder of the GUID doesn't take over as long as the cached handle is good.
    const Entity twin = registry.CreateEntity();
    registry.Add<EntityGuidComponent>(twin, {kGuidA});
    reference.entity = twin;
    EXPECT_EQ(ResolveEntityReference(reference, registry), twin);
    registry.DestroyEntity(twin);
    EXPECT_EQ(ResolveEntityReference(reference, registry), entity);
    registry.DestroyEntity(entity);
    EXPECT_EQ(ResolveEntityReference(reference, registry), kNullEntity);
    EXPECT_EQ(reference.guid, kGuidA);
    EXPECT_EQ(GetGuid(registry, entity), Core::Guid{});

    EntityReference null{{}, 1};
    EXPECT_EQ(ResolveEntityReference(null, registry), kNullEntity);
    EXPECT_EQ(null.entity, kNullEntity);
}

} // namespace
} // namespace Vornu::Scene
