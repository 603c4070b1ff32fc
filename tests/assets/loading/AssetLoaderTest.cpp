#include "engine/assets/loading/AssetLoader.h"

#include "engine/core/logging/Logger.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace Vornu::Assets
{
namespace
{

using Core::Tasks::TaskSystem;
using Core::Tasks::TaskSystemConfig;

constexpr AssetKind kKind = AssetKind::Texture;

/// A loader of one kind whose recipes the test gives by id, with a record of what happened.
class Fixture
{
public:
    explicit Fixture(const AssetLoadConfig& config = {}, std::uint32_t workers = 0, std::uint32_t io = 0)
        : tasks({.workerThreads = workers, .ioThreads = io}), loader(config, &tasks)
    {
        loader.RegisterHandler(kKind, {.isResident = [](AssetId id) { return id >= 900; },
                                       .prepare = [this](AssetId id) { return Prepare(id); },
                                       .unload =
                                           [this](AssetId id)
                                       {
                                           Note("unload", id);
                                           if (unloadFails)
                                           {
                                               throw std::runtime_error("still bound");
                                           }
                                       }});
    }

    /// An asset that decodes `size` bytes.
    AssetLoadRecipe& Add(AssetId id, std::uint64_t size = 1, std::vector<AssetId> dependencies = {})
    {
        AssetLoadRecipe& recipe = recipes[id];
        for (const AssetId dependency : dependencies)
        {
            recipe.dependencies.push_back({dependency, kKind});
        }
        recipe.decode = [size](const AssetBytes&) {
            return AssetLoadPayload{std::make_shared<int>(7), size};
        };
        recipe.publish = [this, id](AssetLoadPayload&) { Note("publish", id); };
        recipe.fail = [this, id](const std::string&) { Note("fail", id); };
        return recipe;
    }

    AssetLoadHandle Submit(AssetId id, std::uint8_t priority = kNormalLoadPriority)
    {
        return loader.Submit(id, kKind, priority);
    }

    AssetLoadState UpdateUntilTerminal(const AssetLoadHandle& handle)
    {
        while (!IsTerminal(AssetLoader::State(handle)))
        {
            loader.Update();
            std::this_thread::yield();
        }
        return AssetLoader::State(handle);
    }

    std::string TakeEvents() { return std::exchange(events, {}); }

    TaskSystem tasks;
    std::map<AssetId, AssetLoadRecipe> recipes;
    std::string events;
    bool unloadFails = false;
    AssetLoader loader;

private:
    AssetLoadRecipe Prepare(AssetId id)
    {
        Note("prepare", id);
        return recipes.at(id);
    }

    void Note(const char* what, AssetId id) { events += what + std::to_string(id) + " "; }
};

/// Holds a running stage until it is opened.
class Gate
{
public:
    void Pass()
    {
        entered_.store(true);
        entered_.notify_all();
        open_.wait(false);
    }
    void WaitForEntry() { entered_.wait(false); }
    void Open()
    {
        open_.store(true);
        open_.notify_all();
    }

private:
    std::atomic<bool> entered_ = false;
    std::atomic<bool> open_ = false;
};

TEST(AssetLoader, EmptyAndUnknownRequests)
{
    Fixture fixture;
    const AssetLoadHandle none = fixture.Submit(0);
    EXPECT_FALSE(none);
    EXPECT_FALSE(fixture.loader.Wait(none));
    EXPECT_FALSE(fixture.loader.Reload(5));
    const AssetLoadHandle unknown = fixture.loader.Submit(5, AssetKind::Mesh, 1);
    EXPECT_EQ(unknown.Id(), 5u);
    EXPECT_EQ(AssetLoader::State(unknown), AssetLoadState::Failed);
    EXPECT_EQ(AssetLoader::ErrorText(unknown), "No asset loader is registered for asset type 1.");
    fixture.loader.Reload(5);
    EXPECT_FALSE(fixture.loader.Wait(unknown));
    EXPECT_EQ(AssetLoader::ErrorText(unknown), "No asset loader is registered for this asset type.");
    const AssetLoadHandle resident = fixture.Submit(900);
    EXPECT_EQ(AssetLoader::State(resident), AssetLoadState::Ready);
    EXPECT_EQ(resident.Version(), 1u);
    EXPECT_EQ(StateText(AssetLoadState::WaitingForDependencies), "WaitingForDependencies");
    EXPECT_EQ(StateText(static_cast<AssetLoadState>(7)), "Unknown");
}

TEST(AssetLoader, AWaitKeepsNobodyOut)
{
    Fixture fixture({}, 1);
    std::atomic<bool> started = false;
    std::atomic<bool> submitted = false;
    bool isFree = false;
    fixture.Add(2);
    fixture.Add(1).decode = [&](const AssetBytes&)
    {
        started = true;
        started.notify_all();
        for (int i = 0; i < 2000 && !submitted; ++i)
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        isFree = submitted;
        return AssetLoadPayload{std::make_shared<int>(7), 1};
    };
    const AssetLoadHandle first = fixture.Submit(1);
    AssetLoadHandle second;
    std::thread other(
        [&]
        {
            started.wait(false);
            second = fixture.Submit(2);
            submitted = true;
        });
    EXPECT_TRUE(fixture.loader.Wait(first));
    other.join();
    EXPECT_TRUE(isFree);
    EXPECT_TRUE(fixture.loader.Wait(second));
}

TEST(AssetLoader, StagesRunOnTheTaskSystemAndPublishingInUpdate)
{
    Fixture fixture({}, 2, 1);
    const std::thread::id self = std::this_thread::get_id();
    std::atomic<bool> stagesElsewhere = true;
    bool publishedHere = false;
    AssetLoadRecipe& recipe = fixture.Add(1, 10);
    recipe.read = [&]
    {
        stagesElsewhere = stagesElsewhere && std::this_thread::get_id() != self;
        return AssetBytes(3, std::byte{5});
    };
    recipe.decode = [&](const AssetBytes& bytes)
    {
        stagesElsewhere = stagesElsewhere && std::this_thread::get_id() != self;
        return AssetLoadPayload{std::make_shared<std::size_t>(bytes.size()), 10};
    };
    recipe.publish = [&](AssetLoadPayload& payload)
    {
        publishedHere =
            std::this_thread::get_id() == self && *static_cast<std::size_t*>(payload.value.get()) == 3;
    };
    const AssetLoadHandle handle = fixture.Submit(1);
    EXPECT_EQ(AssetLoader::State(handle), AssetLoadState::Queued);
    EXPECT_EQ(fixture.UpdateUntilTerminal(handle), AssetLoadState::Ready);
    EXPECT_TRUE(stagesElsewhere.load());
    EXPECT_TRUE(publishedHere);
    EXPECT_EQ(handle.Version(), 1u);
    EXPECT_EQ(fixture.loader.Stats().counts[5], 1u);
    EXPECT_EQ(fixture.loader.Stats().peakBytesPublished, 10u);
}

TEST(AssetLoader, PriorityThenOrderOfSubmissionDecides)
{
    Fixture fixture;
    std::vector<AssetLoadHandle> handles;
    for (AssetId id = 1; id <= 4; ++id)
    {
        fixture.Add(id);
        handles.push_back(fixture.Submit(id, 1));
    }
    EXPECT_EQ(fixture.Submit(3, 2), handles[2]);
    fixture.Submit(3, 0);
    fixture.loader.Update();
    EXPECT_EQ(fixture.TakeEvents(),
              "prepare3 prepare1 prepare2 prepare4 publish3 publish1 publish2 publish4 ");
}

TEST(AssetLoader, BudgetsHoldBackAllButBlockingSlots)
{
    Fixture fixture({.uploadBytesPerUpdate = 1, .maxConcurrentLoads = 0});
    std::vector<AssetLoadHandle> handles;
    for (AssetId id = 1; id <= 3; ++id)
    {
        fixture.Add(id, 1'000);
        handles.push_back(fixture.Submit(id));
    }
    fixture.Add(4, 1'000);
    handles.push_back(fixture.Submit(4, kBlockingLoadPriority));
    fixture.Add(5, 1'000);
    handles.push_back(fixture.Submit(5, kBlockingLoadPriority));
    // Both blocking ones start beyond the limit of one job, and are published beyond the budget.
    fixture.loader.Update();
    EXPECT_EQ(fixture.TakeEvents(), "prepare4 prepare5 publish4 publish5 ");
    fixture.loader.Update();
    EXPECT_EQ(fixture.TakeEvents(), "prepare1 publish1 ");
    fixture.loader.Update();
    EXPECT_EQ(fixture.TakeEvents(), "prepare2 publish2 ");

    Fixture wide({.uploadBytesPerUpdate = 1'500});
    for (AssetId id = 1; id <= 3; ++id)
    {
        wide.Add(id, 700);
        handles.push_back(wide.Submit(id));
    }
    wide.loader.Update();
    EXPECT_EQ(wide.TakeEvents(), "prepare1 prepare2 prepare3 publish1 publish2 ");
    EXPECT_EQ(wide.loader.Stats().bytesPublished, 1'400u);
}

TEST(AssetLoader, DependenciesArePublishedFirst)
{
    Fixture fixture;
    fixture.Add(1, 1, {0, 1, 2, 2});
    fixture.Add(2);
    fixture.Add(4);
    // Only the decoded data shows the dependency on 4, and the recipe of 3 has no job at all.
    fixture.recipes[1].discover = [](AssetLoadPayload&) { return std::vector<AssetDependency>{{3, kKind}}; };
    fixture.Add(3, 1, {4}).decode = nullptr;
    const AssetLoadHandle handle = fixture.Submit(1);
    EXPECT_EQ(fixture.UpdateUntilTerminal(handle), AssetLoadState::Ready);
    const std::string events = fixture.TakeEvents();
    EXPECT_EQ(events.substr(events.find("publish")), "publish2 prepare4 publish4 publish3 publish1 ");
}

TEST(AssetLoader, FailedDependencyDoesNotStopTheDependent)
{
    Fixture fixture;
    fixture.Add(1, 1, {2});
    fixture.Add(2).error = "no such file";
    const AssetLoadHandle handle = fixture.Submit(1);
    EXPECT_TRUE(fixture.loader.Wait(handle));
    const AssetLoadHandle failed = fixture.Submit(2);
    EXPECT_EQ(AssetLoader::ErrorText(failed), "no such file");
    EXPECT_EQ(fixture.TakeEvents(), "prepare1 prepare2 fail2 publish1 ");
    // A failure stays until it is dropped.
    fixture.recipes[2].error.clear();
    EXPECT_FALSE(fixture.loader.Wait(fixture.Submit(2)));
    fixture.loader.UnloadFailed();
    EXPECT_EQ(AssetLoader::State(failed), AssetLoadState::Unloaded);
    EXPECT_TRUE(fixture.loader.Wait(fixture.Submit(2)));
}

TEST(AssetLoader, CycleOfTwoLoadsAndALongerOneFailsItsWaiter)
{
    for (const bool waits : {true, false})
    {
        Fixture fixture;
        fixture.Add(1, 1, {2});
        fixture.Add(2, 1, {1});
        const AssetLoadHandle handle = fixture.Submit(1);
        EXPECT_EQ(waits ? fixture.loader.Wait(handle)
                        : fixture.UpdateUntilTerminal(handle) == AssetLoadState::Ready,
                  true);
    }
    Fixture fixture;
    fixture.Add(1, 1, {2});
    fixture.Add(2, 1, {3});
    fixture.Add(3, 1, {1});
    const AssetLoadHandle handle = fixture.Submit(1);
    EXPECT_FALSE(fixture.loader.Wait(handle));
    EXPECT_EQ(AssetLoader::ErrorText(handle),
              "Asset load could not make progress (dependency cycle or lost job).");
}

TEST(AssetLoader, FaultsOfEveryStageEndInTheErrorText)
{
    const auto failText = [](auto change)
    {
        Fixture fixture({}, 1, 1);
        change(fixture.Add(1));
        const AssetLoadHandle handle = fixture.Submit(1);
        EXPECT_FALSE(fixture.loader.Wait(handle));
        EXPECT_EQ(fixture.TakeEvents(), "prepare1 fail1 ");
        return AssetLoader::ErrorText(handle);
    };
    using Recipe = AssetLoadRecipe;
    const auto told = [] { return std::runtime_error("told"); };
    const auto untold = [] { return std::runtime_error(""); };
    EXPECT_EQ(failText([&](Recipe& r) { r.read = [=]() -> AssetBytes { throw told(); }; }), "told");
    EXPECT_EQ(failText([&](Recipe& r) { r.read = [=]() -> AssetBytes { throw untold(); }; }),
              "Asset read failed.");
    EXPECT_EQ(failText([](Recipe& r) { r.read = []() -> AssetBytes { throw 1; }; }),
              "Asset read failed with an unknown exception.");
    EXPECT_EQ(failText([&](Recipe& r) { r.decode = [=](AssetBytes) -> AssetLoadPayload { throw told(); }; }),
              "told");
    EXPECT_EQ(
        failText([&](Recipe& r) { r.decode = [=](AssetBytes) -> AssetLoadPayload { throw untold(); }; }),
        "Asset decode failed.");
    EXPECT_EQ(failText([](Recipe& r) { r.decode = [](AssetBytes) -> AssetLoadPayload { throw 1; }; }),
              "Asset decode failed with an unknown exception.");
    EXPECT_EQ(failText([&](Recipe& r) { r.publish = [=](AssetLoadPayload&) { throw told(); }; }), "told");
    EXPECT_EQ(failText(
                  [&](Recipe& r)
                  {
                      r.discover = [=](AssetLoadPayload&) -> std::vector<AssetDependency> { throw told(); };
                  }),
              "told");

    Fixture fixture;
    fixture.Add(8).error = "bad header";
    fixture.recipes[8].fail = nullptr;
    fixture.loader.Wait(fixture.Submit(8));
    EXPECT_EQ(Core::GetLogger().CopyHistory().back().message, "Failed to load asset 8: bad header");
}

TEST(AssetLoader, ReloadKeepsTheOldDataUntilTheNewIsThere)
{
    Fixture fixture;
    fixture.Add(1);
    const AssetLoadHandle handle = fixture.Submit(1);
    ASSERT_TRUE(fixture.loader.Wait(handle));
    std::vector<AssetLoadState> seen;
    fixture.recipes[1].publish = [&](AssetLoadPayload&) { seen.push_back(AssetLoader::State(handle)); };
    EXPECT_TRUE(fixture.loader.Reload(1));
    EXPECT_EQ(AssetLoader::State(handle), AssetLoadState::Ready);
    fixture.loader.Update();
    EXPECT_EQ(seen, std::vector{AssetLoadState::Ready});
    EXPECT_EQ(handle.Version(), 2u);

    fixture.recipes[1].error = "gone";
    fixture.loader.Reload(1);
    fixture.loader.Update();
    EXPECT_EQ(AssetLoader::State(handle), AssetLoadState::Ready);
    EXPECT_EQ(AssetLoader::ErrorText(handle), "");
    EXPECT_EQ(handle.Version(), 2u);
}

TEST(AssetLoader, ReloadWhileLoadingDropsTheOldResult)
{
    Fixture fixture({}, 1, 1);
    Gate gate;
    std::atomic<int> reads = 0;
    AssetLoadRecipe& recipe = fixture.Add(1);
    recipe.read = [&]
    {
        const int number = ++reads;
        if (number == 1)
        {
            gate.Pass();
        }
        return AssetBytes(static_cast<std::size_t>(number));
    };
    recipe.decode = [](const AssetBytes& bytes) {
        return AssetLoadPayload{std::make_shared<std::size_t>(bytes.size()), 1};
    };
    std::vector<std::size_t> published;
    recipe.publish = [&](AssetLoadPayload& payload)
    { published.push_back(*static_cast<std::size_t*>(payload.value.get())); };
    const AssetLoadHandle handle = fixture.Submit(1);
    fixture.loader.Update();
    gate.WaitForEntry();
    EXPECT_EQ(AssetLoader::State(handle), AssetLoadState::Loading);
    EXPECT_TRUE(fixture.loader.Reload(1));
    EXPECT_EQ(fixture.loader.Stats().jobsInFlight, 1u);
    gate.Open();
    EXPECT_EQ(fixture.UpdateUntilTerminal(handle), AssetLoadState::Ready);
    EXPECT_EQ(published, std::vector<std::size_t>{2});
}

TEST(AssetLoader, DroppedHandleCancelsTheJobUnlessPinned)
{
    for (const bool pinned : {false, true})
    {
        Fixture fixture({}, 1, 1);
        Gate gate;
        fixture.Add(1).read = [&gate]
        {
            gate.Pass();
            return AssetBytes();
        };
        AssetLoadHandle handle = fixture.Submit(1);
        if (pinned)
        {
            fixture.loader.Pin(1);
        }
        fixture.loader.Update();
        gate.WaitForEntry();
        handle = {};
        fixture.loader.Update();
        EXPECT_EQ(fixture.loader.Stats().counts[2], pinned ? 1u : 0u);
        gate.Open();
        // A new request finds the pinned slot, or makes a new one that the old result mustn't reach.
        EXPECT_TRUE(fixture.loader.Wait(fixture.Submit(1)));
        EXPECT_EQ(fixture.TakeEvents(), pinned ? "prepare1 publish1 " : "prepare1 prepare1 publish1 ");
    }
}

TEST(AssetLoader, SweepUnloadsWhatNobodyUses)
{
    Fixture fixture({.sweepIntervalUpdates = 3});
    fixture.Add(1, 1, {2});
    fixture.Add(2, 1, {3});
    fixture.Add(3);
    fixture.Add(4);
    AssetLoadHandle handle = fixture.Submit(1);
    fixture.loader.Wait(handle);
    fixture.loader.Wait(fixture.Submit(4));
    fixture.loader.Pin(4);
    EXPECT_EQ(fixture.loader.SweepUnused(), 0u);
    handle = {};
    fixture.TakeEvents();
    fixture.loader.Update();
    fixture.loader.Update();
    EXPECT_EQ(fixture.TakeEvents(), "");
    fixture.unloadFails = true;
    fixture.loader.Update();
    EXPECT_EQ(fixture.TakeEvents(), "unload1 unload2 unload3 ");
    EXPECT_EQ(Core::GetLogger().CopyHistory().back().message, "Failed to unload asset 3: still bound");
}

TEST(AssetLoader, CallbacksComeOnceAndMayCallBack)
{
    Fixture fixture;
    fixture.Add(1);
    fixture.Add(2).error = "bad";
    const AssetLoadHandle good = fixture.Submit(1);
    const AssetLoadHandle bad = fixture.Submit(2);
    std::string states;
    fixture.loader.Then(good,
                        [&](AssetLoadState state)
                        {
                            states += StateText(state);
                            fixture.loader.Then(good, [&](AssetLoadState) { states += " again"; });
                            fixture.loader.Update();
                        });
    fixture.loader.Then(bad, [&](AssetLoadState state) { (states += " ") += StateText(state); });
    fixture.loader.Update();
    fixture.loader.Update();
    EXPECT_EQ(states, "Ready Failed again");
}

TEST(AssetLoader, FunctionsMayWaitForOtherAssets)
{
    for (const std::uint32_t workers : {0u, 2u})
    {
        Fixture fixture({}, workers, workers);
        for (AssetId id = 1; id <= 3; ++id)
        {
            fixture.Add(id);
        }
        bool inDiscover = false;
        bool inPublish = false;
        fixture.recipes[1].discover = [&](AssetLoadPayload&)
        {
            inDiscover = fixture.loader.Wait(fixture.Submit(2));
            return std::vector<AssetDependency>();
        };
        fixture.recipes[1].publish = [&](AssetLoadPayload&)
        { inPublish = fixture.loader.Wait(fixture.Submit(3)); };
        const AssetLoadHandle first = fixture.Submit(1);
        const AssetLoadHandle second = fixture.Submit(2);
        const AssetLoadHandle third = fixture.Submit(3);
        EXPECT_EQ(fixture.UpdateUntilTerminal(first), AssetLoadState::Ready);
        EXPECT_TRUE(inDiscover);
        EXPECT_TRUE(inPublish);
    }
}

TEST(AssetLoader, WaiterRunsTheJobOfABusyPoolItself)
{
    Fixture fixture({}, 1, 1);
    Gate gate;
    const auto busy = fixture.tasks.Async(Core::Tasks::TaskPriority::High, [&gate] { gate.Pass(); });
    gate.WaitForEntry();
    fixture.Add(1, 1, {2}).read = [] { return AssetBytes(); };
    fixture.Add(2);
    EXPECT_TRUE(fixture.loader.Wait(fixture.Submit(1)));
    EXPECT_EQ(fixture.TakeEvents(), "prepare1 prepare2 publish2 publish1 ");
    gate.Open();
    fixture.tasks.Wait(busy);
}

TEST(AssetLoader, ShutdownOfTheTaskSystemFailsTheWaiter)
{
    Fixture fixture({}, 1);
    Gate gate;
    fixture.tasks.Async(Core::Tasks::TaskPriority::High, [&gate] { gate.Pass(); });
    gate.WaitForEntry();
    fixture.Add(1);
    const AssetLoadHandle handle = fixture.Submit(1);
    fixture.loader.Update();
    std::thread stopper([&fixture] { fixture.tasks.Shutdown(true); });
    gate.Open();
    stopper.join();
    const bool ready = fixture.loader.Wait(handle);
    // The worker may have come to the job before the shutdown did.
    EXPECT_EQ(AssetLoader::ErrorText(handle),
              ready ? "" : "Asset load was cancelled by task system shutdown.");
}

TEST(AssetLoader, ManyLoadsFromManyThreadsAllArrive)
{
    Fixture fixture({.uploadBytesPerUpdate = 50, .maxConcurrentLoads = 3}, 2, 2);
    for (AssetId id = 1; id <= 200; ++id)
    {
        AssetLoadRecipe& recipe = fixture.Add(id, id % 7, {id / 2, id / 3});
        recipe.read = [id] { return AssetBytes(id); };
    }
    std::atomic<int> ready = 0;
    std::vector<std::thread> clients;
    for (AssetId client = 0; client < 3; ++client)
    {
        clients.emplace_back(
            [&fixture, &ready, client]
            {
                std::vector<AssetLoadHandle> handles;
                for (AssetId id = 1 + client; id <= 200; id += 2)
                {
                    handles.push_back(fixture.Submit(id, static_cast<std::uint8_t>(id % 3)));
                    if (id % 31 == 0)
                    {
                        fixture.loader.Wait(handles.back());
                    }
                }
                for (const AssetLoadHandle& handle : handles)
                {
                    while (AssetLoader::State(handle) != AssetLoadState::Ready)
                    {
                        std::this_thread::yield();
                    }
                    ++ready;
                }
            });
    }
    while (ready.load() < 100 + 100 + 99)
    {
        fixture.loader.Update();
        std::this_thread::yield();
    }
    for (std::thread& client : clients)
    {
        client.join();
    }
    EXPECT_GT(fixture.loader.SweepUnused(), 0u);
}

TEST(AssetLoader, ResetCancelsAndForgets)
{
    Fixture fixture({}, 1, 1);
    fixture.Add(1, 1, {2}).read = [] { return AssetBytes(); };
    fixture.Add(2, 1, {1}).read = [] { return AssetBytes(); };
    fixture.Add(3);
    const AssetLoadHandle handle = fixture.Submit(1);
    EXPECT_TRUE(fixture.loader.Wait(fixture.Submit(3)));
    fixture.loader.Update();
    fixture.loader.Reset();
    EXPECT_EQ(AssetLoader::State(handle), AssetLoadState::Unloaded);
    EXPECT_EQ(fixture.TakeEvents().find("unload"), std::string::npos);
    fixture.loader.Update();
    EXPECT_EQ(fixture.loader.Stats().counts, (std::array<std::uint32_t, kAssetLoadStateCount>{}));
    EXPECT_TRUE(fixture.loader.Wait(fixture.Submit(1)));
}

} // namespace
} // namespace Vornu::Assets
