#pragma once

#include "engine/assets/loading/AssetLoadJob.h"
#include "engine/assets/loading/AssetLoadRecipe.h"
#include "engine/assets/loading/AssetLoadSlot.h"
#include "engine/assets/loading/AssetLoadState.h"
#include "engine/assets/loading/LoaderMutex.h"
#include "engine/core/tasks/TaskSystem.h"

#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace Vornu::Assets
{

struct AssetLoadConfig
{
    std::uint64_t uploadBytesPerUpdate = 33'554'432;
    /// 0 counts as 1.
    std::uint32_t maxConcurrentLoads = 8;
    /// 0 turns the sweep off.
    std::uint32_t sweepIntervalUpdates = 120;
};

/// Higher goes first.
inline constexpr std::uint8_t kLowestLoadPriority = 0;
inline constexpr std::uint8_t kNormalLoadPriority = 1;
inline constexpr std::uint8_t kReloadPriority = 2;
/// A caller is about to wait.
inline constexpr std::uint8_t kBlockingLoadPriority = 3;

/// As of the end of the last `Update`.
struct AssetLoadStats
{
    /// By the number of the real state.
    std::array<std::uint32_t, kAssetLoadStateCount> counts{};
    std::uint32_t jobsInFlight = 0;
    std::uint64_t updates = 0;
    std::uint64_t bytesPublished = 0;
    std::uint32_t slotsPublished = 0;
    /// The most bytes that one update published.
    std::uint64_t peakBytesPublished = 0;
};

/// Loads heavy assets in stages: reads and decodes them on the task system, waits for what they depend on and
/// publishes them in `Update`, within a budget. Knows nothing of formats: a handler for each kind says how.
///
/// A failure ends in the asset's state and error text. `Update` belongs to one thread; everything else is
/// safe from any, and may be called by handlers and by the functions of recipes other than `read` and
/// `decode`.
class AssetLoader
{
public:
    /// Runs its jobs on `tasks`, which must outlive it; null for the installed system of the moment.
    explicit AssetLoader(const AssetLoadConfig& config = {}, Core::Tasks::TaskSystem* tasks = nullptr);

    /// Cancels everything, as `Reset` does.
    ~AssetLoader();

    AssetLoader(const AssetLoader&) = delete;
    AssetLoader& operator=(const AssetLoader&) = delete;

    /// Replaces the kind's handler.
    void RegisterHandler(AssetKind kind, AssetLoadHandler handler);

    /// Null for none. The caller keeps the ownership.
    void SetListener(AssetLoadListener* listener);

    /// Asks for an asset; raises the priority of one that was asked for before. Id 0 gives an empty handle.
    AssetLoadHandle Submit(AssetId id, AssetKind kind, std::uint8_t priority);

    /// Keeps the asset loaded without any handle. Without effect for an unknown id.
    void Pin(AssetId id);

    /// Loads the asset again. Resident data stays, and shows as `Ready`, until the new data is published, and
    /// for good if that fails. False for an unknown id.
    bool Reload(AssetId id);

    /// Loads the asset now, with what it depends on, and gives true if it is ready. The caller runs the jobs
    /// itself if need be.
    bool Wait(const AssetLoadHandle& handle);

    /// One step of all loads; called once per frame.
    void Update();

    /// Unloads what is neither referenced nor pinned. Gives the number of unloads.
    std::size_t SweepUnused();

    /// Unloads an asset that has gone, whoever refers to it. False for an unknown id.
    bool Drop(AssetId id);

    /// Drops what has failed, so that it can be asked for anew.
    void UnloadFailed();

    /// Cancels all loads, waits for the running jobs and forgets every asset without calling its handler.
    void Reset();

    /// `Unloaded` for an empty handle.
    static AssetLoadState State(const AssetLoadHandle& handle) noexcept;
    /// Of the last failure; empty without one.
    static std::string ErrorText(const AssetLoadHandle& handle);

    /// Calls `callback` once, in an `Update` that finds the asset in a terminal state. Doesn't count as a
    /// reference. What it throws is logged.
    void Then(const AssetLoadHandle& handle, std::function<void(AssetLoadState)> callback);

    AssetLoadStats Stats() const;

private:
    using Slot = Detail::AssetLoadSlot;
    using SlotPointer = std::shared_ptr<Slot>;
    using SlotList = std::vector<SlotPointer>;

    enum class Scope
    {
        All,
        BlockingOnly,
    };

    Core::Tasks::TaskSystem& Tasks() const;
    SlotPointer Find(AssetId id) const;
    std::shared_ptr<const AssetLoadHandler> HandlerOf(AssetKind kind) const;
    SlotList AllSlots() const;
    static SlotList InOrder(SlotList& list, AssetLoadState state);

    void SetState(Slot& slot, AssetLoadState state);
    void Enqueue(const SlotPointer& slot);
    void EnterNewSlot(const SlotPointer& slot);
    static void SpreadBlocking(Slot& slot, unsigned depth);

    AssetLoadRecipe Prepare(Slot& slot) const;
    void Start(const SlotPointer& slot);
    void BeginJob(Slot& slot, AssetLoadRecipe& recipe);
    void AddDependencies(Slot& slot, const std::vector<AssetDependency>& dependencies);

    bool DrainCompletions();
    void TakeResult(const SlotPointer& slot, Detail::AssetLoadResult& result);
    bool RunStartPass(Scope scope);
    bool RunDependencyGate(Scope scope);
    bool RunPublishPass(Scope scope);
    void Publish(Slot& slot);
    void Fail(Slot& slot, const std::string& text);

    bool Advance(Scope scope);
    bool WaitForBlockingJob(const SlotPointer& waited);
    void HelpUntilDone(Core::Tasks::CounterHandle counter);
    bool HasResultOf(std::uint64_t job) const;
    void CancelAbandoned();
    void Unload(const SlotPointer& slot, bool sweep);
    void CountStates();
    void DeliverCallbacks();
    std::uint32_t JobsInFlight() const;

    const AssetLoadConfig config_;
    Core::Tasks::TaskSystem* const tasks_;

    mutable Detail::LoaderMutex mutex_;
    std::unordered_map<AssetKind, std::shared_ptr<const AssetLoadHandler>> handlers_;
    AssetLoadListener* listener_ = nullptr;
    std::unordered_map<AssetId, SlotPointer> slots_;
    // The slots that entered a state, with such as have left it since.
    SlotList pending_;
    SlotList waiting_;
    SlotList uploads_;
    std::vector<std::pair<SlotPointer, std::function<void(AssetLoadState)>>> callbacks_;
    bool delivering_ = false;
    std::shared_ptr<Detail::CompletionQueue> completions_;
    /// Taken from the queue and not yet applied.
    std::deque<Detail::AssetLoadResult> results_;
    std::uint64_t nextSequence_ = 0;
    std::uint64_t lastJob_ = 0;
    std::uint64_t updates_ = 0;
    std::uint64_t lastSweep_ = 0;
    std::uint64_t bytesThisUpdate_ = 0;
    std::uint32_t publishedThisUpdate_ = 0;
    std::uint64_t peakBytes_ = 0;
    AssetLoadStats stats_;
};

} // namespace Vornu::Assets
