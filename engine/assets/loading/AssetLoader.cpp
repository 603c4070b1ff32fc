#include "engine/assets/loading/AssetLoader.h"

#include "engine/core/Profile.h"
#include "engine/core/logging/Logger.h"

#include <algorithm>
#include <exception>
#include <mutex>
#include <string_view>

namespace Vornu::Assets
{
namespace
{

constexpr unsigned kMaxBlockingDepth = 16;
constexpr int kRoundsPerUpdate = 4;

void LogAssetError(std::string text)
{
    Core::Log(Core::LogCategory::Assets, Core::LogLevel::Error, std::move(text));
}

std::string UnknownErrorText()
{
    return Detail::CurrentExceptionText("unknown error", "unknown exception");
}

} // namespace

AssetLoader::AssetLoader(const AssetLoadConfig& config, Core::Tasks::TaskSystem* tasks)
    : config_(config), tasks_(tasks), completions_(std::make_shared<Detail::CompletionQueue>())
{
}

AssetLoader::~AssetLoader()
{
    Reset();
}

void AssetLoader::RegisterHandler(AssetKind kind, AssetLoadHandler handler)
{
    auto shared = std::make_shared<const AssetLoadHandler>(std::move(handler));
    const std::lock_guard lock(mutex_);
    handlers_[kind] = std::move(shared);
}

void AssetLoader::SetListener(AssetLoadListener* listener)
{
    const std::lock_guard lock(mutex_);
    listener_ = listener;
}

Core::Tasks::TaskSystem& AssetLoader::Tasks() const
{
    return tasks_ != nullptr ? *tasks_ : Core::Tasks::TaskSystem::Get();
}

AssetLoader::SlotPointer AssetLoader::Find(AssetId id) const
{
    const auto found = slots_.find(id);
    return found == slots_.end() ? nullptr : found->second;
}

std::shared_ptr<const AssetLoadHandler> AssetLoader::HandlerOf(AssetKind kind) const
{
    const auto found = handlers_.find(kind);
    return found == handlers_.end() || !found->second->prepare ? nullptr : found->second;
}

AssetLoader::SlotList AssetLoader::AllSlots() const
{
    SlotList all;
    all.reserve(slots_.size());
    for (const auto& [id, slot] : slots_)
    {
        all.push_back(slot);
    }
    return all;
}

AssetLoadHandle AssetLoader::Submit(AssetId id, AssetKind kind, std::uint8_t priority)
{
    if (id == 0)
    {
        return {};
    }
    const std::lock_guard lock(mutex_);
    SlotPointer slot = Find(id);
    if (slot)
    {
        slot->priority = std::max(slot->priority, priority);
        if (priority >= kBlockingLoadPriority && !IsTerminal(slot->state))
        {
            SpreadBlocking(*slot, 0);
        }
        return AssetLoadHandle(slot);
    }
    slot = std::make_shared<Slot>();
    slot->id = id;
    slot->kind = kind;
    slot->priority = priority;
    slot->blocking = priority >= kBlockingLoadPriority;
    slot->sequence = nextSequence_++;
    slots_.emplace(id, slot);
    AssetLoadHandle handle(slot);
    EnterNewSlot(slot);
    return handle;
}

void AssetLoader::EnterNewSlot(const SlotPointer& slot)
{
    const auto handler = HandlerOf(slot->kind);
    if (!handler)
    {
        const auto number = std::to_string(static_cast<std::uint32_t>(slot->kind));
        Fail(*slot, "No asset loader is registered for asset type " + number + ".");
        return;
    }
    bool resident = false;
    try
    {
        resident = handler->isResident && handler->isResident(slot->id);
    }
    catch (...)
    {
        Fail(*slot, UnknownErrorText());
        return;
    }
    if (resident)
    {
        slot->resident = true;
        slot->blocking = false;
        slot->version.store(1);
        SetState(*slot, AssetLoadState::Ready);
        return;
    }
    Enqueue(slot);
}

void AssetLoader::SpreadBlocking(Slot& slot, unsigned depth)
{
    slot.priority = std::max(slot.priority, kBlockingLoadPriority);
    slot.blocking = true;
    if (depth == kMaxBlockingDepth)
    {
        return;
    }
    for (const AssetLoadHandle& dependency : slot.dependencies)
    {
        // One that is done has nothing to hurry, and would keep the mark for its next reload.
        if (!dependency.slot_->blocking && !IsTerminal(dependency.slot_->state))
        {
            SpreadBlocking(*dependency.slot_, depth + 1);
        }
    }
}

void AssetLoader::Pin(AssetId id)
{
    const std::lock_guard lock(mutex_);
    if (const SlotPointer slot = Find(id))
    {
        slot->pinned = true;
    }
}

bool AssetLoader::Reload(AssetId id)
{
    const std::lock_guard lock(mutex_);
    const SlotPointer slot = Find(id);
    if (!slot)
    {
        return false;
    }
    slot->priority = std::max(slot->priority, kReloadPriority);
    if (slot->state == AssetLoadState::Loading)
    {
        slot->reloadRequested = true;
    }
    else if (slot->state != AssetLoadState::Queued)
    {
        slot->payload = {};
        slot->reloading = slot->resident;
        Enqueue(slot);
    }
    return true;
}

bool AssetLoader::Advance(Scope scope)
{
    bool moved = DrainCompletions();
    moved = RunStartPass(scope) || moved;
    return DrainCompletions() || moved;
}

bool AssetLoader::Wait(const AssetLoadHandle& handle)
{
    if (!handle)
    {
        return false;
    }
    const std::lock_guard lock(mutex_);
    const Core::ProfileScope profile("Assets", "AssetLoader::Wait");
    const SlotPointer slot = handle.slot_;
    if (!IsTerminal(slot->state))
    {
        SpreadBlocking(*slot, 0);
    }
    while (!IsTerminal(slot->state))
    {
        bool moved = Advance(Scope::BlockingOnly);
        moved = RunDependencyGate(Scope::BlockingOnly) || moved;
        moved = RunPublishPass(Scope::BlockingOnly) || moved;
        if (!moved && !WaitForBlockingJob(slot))
        {
            Fail(*slot, "Asset load could not make progress (dependency cycle or lost job).");
        }
    }
    return slot->state == AssetLoadState::Ready;
}

/// Helping runs tasks that may have to do with another thread that wants this loader, so nobody is kept out
/// meanwhile. Takes a copy, as the slot may get another counter.
void AssetLoader::HelpUntilDone(Core::Tasks::CounterHandle counter)
{
    const Detail::LoaderMutex::Gap gap(mutex_);
    Tasks().Wait(counter);
}

bool AssetLoader::HasResultOf(std::uint64_t job) const
{
    // Another thread may be applying what it took from the queue.
    return completions_->HasResultOf(job) ||
           std::any_of(results_.begin(), results_.end(),
                       [job](const auto& result) { return result.job == job; });
}

bool AssetLoader::WaitForBlockingJob(const SlotPointer& waited)
{
    SlotPointer slot = waited->jobActive && waited->blocking ? waited : nullptr;
    for (auto entry = slots_.begin(); !slot && entry != slots_.end(); ++entry)
    {
        if (entry->second->blocking && entry->second->jobActive)
        {
            slot = entry->second;
        }
    }
    if (!slot)
    {
        return false;
    }
    const std::uint64_t job = slot->job;
    // The slot can have moved on afterwards.
    const auto isCurrent = [&slot, job] { return slot->jobActive && slot->job == job; };
    try
    {
        HelpUntilDone(slot->counter);
    }
    catch (...)
    {
        if (isCurrent())
        {
            slot->jobActive = false;
            Fail(*slot, "Asset load was cancelled by task system shutdown.");
        }
        return true;
    }
    if (isCurrent() && !HasResultOf(job))
    {
        slot->jobActive = false;
        Fail(*slot, "Asset load job ended without a result.");
    }
    return true;
}

void AssetLoader::Update()
{
    const std::lock_guard lock(mutex_);
    ++updates_;
    bytesThisUpdate_ = 0;
    publishedThisUpdate_ = 0;
    DrainCompletions();
    CancelAbandoned();
    Advance(Scope::All);
    for (int round = 0; round < kRoundsPerUpdate; ++round)
    {
        const bool gated = RunDependencyGate(Scope::All);
        const bool published = RunPublishPass(Scope::All);
        if (!gated && !published)
        {
            break;
        }
    }
    if (config_.sweepIntervalUpdates != 0 && updates_ - lastSweep_ >= config_.sweepIntervalUpdates)
    {
        lastSweep_ = updates_;
        SweepUnused();
    }
    CountStates();
    DeliverCallbacks();
}

void AssetLoader::CancelAbandoned()
{
    for (const SlotPointer& slot : AllSlots())
    {
        if (!slot->pinned && slot->references.load() == 0 && !slot->resident && !slot->inCall &&
            !IsTerminal(slot->state))
        {
            Unload(slot, false);
        }
    }
}

std::size_t AssetLoader::SweepUnused()
{
    const std::lock_guard lock(mutex_);
    const Core::ProfileScope profile("Assets", "SweepUnused");
    std::size_t count = 0;
    std::size_t before = 0;
    do
    {
        before = count;
        for (const SlotPointer& slot : AllSlots())
        {
            // A handler may have dropped the slot meanwhile, or taken a handle to it.
            if (!slot->pinned && slot->references.load() == 0 && !slot->inCall && Find(slot->id) == slot)
            {
                Unload(slot, true);
                ++count;
            }
        }
    } while (count != before);
    return count;
}

void AssetLoader::Unload(const SlotPointer& slot, bool sweep)
{
    if (sweep && slot->published && slot->resident)
    {
        slot->inCall = true;
        try
        {
            if (listener_ != nullptr)
            {
                listener_->Unloaded(slot->id, slot->kind);
            }
            const auto handler = handlers_.find(slot->kind);
            const auto kept = handler == handlers_.end() ? nullptr : handler->second;
            if (kept && kept->unload)
            {
                kept->unload(slot->id);
            }
        }
        catch (...)
        {
            LogAssetError("Failed to unload asset " + std::to_string(slot->id) + ": " + UnknownErrorText());
        }
        slot->inCall = false;
    }
    if (slot->cancelFlag)
    {
        slot->cancelFlag->store(true);
    }
    if (Find(slot->id) == slot)
    {
        slots_.erase(slot->id);
    }
    // Through a local list: letting go of a dependency may be what frees this slot.
    const std::vector<AssetLoadHandle> released = std::exchange(slot->dependencies, {});
    slot->payload = {};
    slot->jobActive = false;
    slot->resident = false;
    slot->reloading = false;
    SetState(*slot, AssetLoadState::Unloaded);
}

bool AssetLoader::Drop(AssetId id)
{
    const std::lock_guard lock(mutex_);
    const SlotPointer slot = Find(id);
    if (!slot || slot->inCall)
    {
        return false;
    }
    Unload(slot, true);
    return true;
}

void AssetLoader::UnloadFailed()
{
    const std::lock_guard lock(mutex_);
    for (const SlotPointer& slot : AllSlots())
    {
        if (slot->state == AssetLoadState::Failed && !slot->inCall)
        {
            Unload(slot, false);
        }
    }
}

void AssetLoader::Reset()
{
    const std::lock_guard lock(mutex_);
    while (!slots_.empty()) // others may submit while this waits
    {
        const auto all = std::exchange(slots_, {}); // needs no memory, for the end of a program that has none
        for (const auto& [id, slot] : all)
        {
            if (slot->jobActive)
            {
                slot->cancelFlag->store(true);
            }
        }
        for (const auto& [id, slot] : all)
        {
            try
            {
                if (slot->jobActive)
                {
                    HelpUntilDone(slot->counter);
                }
            }
            catch (...)
            {
                // The task system dropped the job, which is as good an end as any here.
            }
            Unload(slot, false);
        }
    }
    pending_.clear();
    waiting_.clear();
    uploads_.clear();
    callbacks_.clear();
    completions_->TakeAll();
    results_.clear();
}

AssetLoadState AssetLoader::State(const AssetLoadHandle& handle) noexcept
{
    return handle ? handle.slot_->publicState.load() : AssetLoadState::Unloaded;
}

std::string AssetLoader::ErrorText(const AssetLoadHandle& handle)
{
    if (!handle)
    {
        return {};
    }
    const std::lock_guard lock(handle.slot_->errorMutex);
    return handle.slot_->error;
}

void AssetLoader::Then(const AssetLoadHandle& handle, std::function<void(AssetLoadState)> callback)
{
    if (handle && callback)
    {
        const std::lock_guard lock(mutex_);
        callbacks_.emplace_back(handle.slot_, std::move(callback));
    }
}

void AssetLoader::DeliverCallbacks()
{
    if (delivering_)
    {
        return;
    }
    delivering_ = true;
    const auto isDue = [](const auto& entry) { return IsTerminal(entry.first->state); };
    auto due = std::find_if(callbacks_.begin(), callbacks_.end(), isDue);
    while (due != callbacks_.end())
    {
        const auto [slot, callback] = std::move(*due);
        callbacks_.erase(due);
        try
        {
            callback(slot->state);
        }
        catch (...)
        {
            LogAssetError("Callback of asset " + std::to_string(slot->id) + " failed: " + UnknownErrorText());
        }
        due = std::find_if(callbacks_.begin(), callbacks_.end(), isDue);
    }
    delivering_ = false;
}

std::uint32_t AssetLoader::JobsInFlight() const
{
    return static_cast<std::uint32_t>(std::count_if(
        slots_.begin(), slots_.end(), [](const auto& entry) { return entry.second->jobActive; }));
}

void AssetLoader::CountStates()
{
    stats_ = {};
    for (const auto& [id, slot] : slots_)
    {
        ++stats_.counts[static_cast<std::size_t>(slot->state)];
    }
    stats_.jobsInFlight = JobsInFlight();
    stats_.updates = updates_;
    stats_.bytesPublished = bytesThisUpdate_;
    stats_.slotsPublished = publishedThisUpdate_;
    peakBytes_ = std::max(peakBytes_, bytesThisUpdate_);
    stats_.peakBytesPublished = peakBytes_;
}

AssetLoadStats AssetLoader::Stats() const
{
    const std::lock_guard lock(mutex_);
    return stats_;
}

} // namespace Vornu::Assets
