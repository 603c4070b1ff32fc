#include "engine/assets/loading/AssetLoader.h"
#include "engine/core/Profile.h"
#include "engine/core/logging/Logger.h"

#include <algorithm>
#include <string>
#include <tuple>

namespace Vornu::Assets
{
namespace
{

/// Marks a slot while one of its functions runs, so that a pass that the function causes leaves it alone.
class CallScope
{
public:
    explicit CallScope(Detail::AssetLoadSlot& slot) : slot_(slot), outer_(std::exchange(slot.inCall, true)) {}
    ~CallScope() { slot_.inCall = outer_; }

    CallScope(const CallScope&) = delete;
    CallScope& operator=(const CallScope&) = delete;

private:
    Detail::AssetLoadSlot& slot_;
    bool outer_;
};

std::string FailureText()
{
    return Detail::CurrentExceptionText("unknown error", "unknown exception");
}

bool WaitsFor(const Detail::AssetLoadSlot& slot, AssetId id)
{
    return std::any_of(slot.dependencies.begin(), slot.dependencies.end(),
                       [id](const AssetLoadHandle& dependency) { return dependency.Id() == id; });
}

} // namespace

/// Drops what has left the state, and gives the rest in the order of service: a copy, as every step may add.
AssetLoader::SlotList AssetLoader::InOrder(SlotList& list, AssetLoadState state)
{
    std::erase_if(list, [state](const SlotPointer& slot) { return slot->state != state; });
    std::sort(list.begin(), list.end(),
              [](const SlotPointer& a, const SlotPointer& b)
              { return std::tuple(b->priority, a->sequence) < std::tuple(a->priority, b->sequence); });
    list.erase(std::unique(list.begin(), list.end()), list.end());
    return list;
}

void AssetLoader::SetState(Slot& slot, AssetLoadState state)
{
    slot.state = state;
    slot.publicState.store(slot.reloading && slot.resident ? AssetLoadState::Ready : state);
}

void AssetLoader::Enqueue(const SlotPointer& slot)
{
    SetState(*slot, AssetLoadState::Queued);
    pending_.push_back(slot);
}

bool AssetLoader::RunStartPass(Scope scope)
{
    bool started = false;
    const SlotList entries = InOrder(pending_, AssetLoadState::Queued);
    const std::uint32_t limit = std::max(config_.maxConcurrentLoads, 1u);
    std::uint32_t inFlight = entries.empty() ? 0 : JobsInFlight();
    for (const SlotPointer& slot : entries)
    {
        const bool mayStart = slot->blocking || (scope == Scope::All && inFlight < limit);
        if (mayStart && slot->state == AssetLoadState::Queued && !slot->inCall)
        {
            Start(slot);
            inFlight += slot->jobActive ? 1 : 0;
            started = true;
        }
    }
    return started;
}

AssetLoadRecipe AssetLoader::Prepare(Slot& slot) const
{
    AssetLoadRecipe recipe;
    const auto handler = HandlerOf(slot.kind);
    if (!handler)
    {
        recipe.error = "No asset loader is registered for this asset type.";
        return recipe;
    }
    try
    {
        const CallScope call(slot);
        recipe = handler->prepare(slot.id);
    }
    catch (...)
    {
        recipe.error = FailureText();
    }
    return recipe;
}

void AssetLoader::Start(const SlotPointer& slot)
{
    AssetLoadRecipe recipe = Prepare(*slot);
    if (slot->state != AssetLoadState::Queued)
    {
        return;
    }
    slot->discover = std::move(recipe.discover);
    slot->publish = std::move(recipe.publish);
    slot->fail = std::move(recipe.fail);
    slot->payload = {};
    if (!recipe.error.empty())
    {
        Fail(*slot, recipe.error);
        return;
    }
    // The old ones are let go last, so that one that is still wanted isn't without a reference in between.
    const std::vector<AssetLoadHandle> old = std::exchange(slot->dependencies, {});
    AddDependencies(*slot, recipe.dependencies);
    if (slot->state != AssetLoadState::Queued)
    {
        return;
    }
    if (!recipe.read && !recipe.decode)
    {
        SetState(*slot, AssetLoadState::WaitingForDependencies);
        waiting_.push_back(slot);
        return;
    }
    BeginJob(*slot, recipe);
}

void AssetLoader::BeginJob(Slot& slot, AssetLoadRecipe& recipe)
{
    slot.cancelFlag = std::make_shared<std::atomic<bool>>(false);
    slot.counter = Core::Tasks::CounterHandle::Make();
    slot.job = ++lastJob_;
    slot.jobActive = true; // behind what may fail: such a job is waited for
    slot.reloadRequested = false;
    SetState(slot, AssetLoadState::Loading);
    Detail::StartJob({.id = slot.id,
                      .serial = slot.job,
                      .read = std::move(recipe.read),
                      .decode = std::move(recipe.decode),
                      .cancelFlag = slot.cancelFlag,
                      .completions = completions_,
                      .counter = slot.counter,
                      .tasks = &Tasks()});
}

void AssetLoader::AddDependencies(Slot& slot, const std::vector<AssetDependency>& dependencies)
{
    const CallScope call(slot);
    for (const AssetDependency& dependency : dependencies)
    {
        if (dependency.id != 0 && dependency.id != slot.id && !WaitsFor(slot, dependency.id))
        {
            const std::uint8_t priority = slot.blocking ? kBlockingLoadPriority : slot.priority;
            slot.dependencies.push_back(Submit(dependency.id, dependency.kind, priority));
        }
    }
}

bool AssetLoader::DrainCompletions()
{
    for (Detail::AssetLoadResult& result : completions_->TakeAll())
    {
        results_.push_back(std::move(result));
    }
    bool drained = false;
    // One by one from the member: a `discover` that waits for another asset drains what is left.
    while (!results_.empty())
    {
        Detail::AssetLoadResult result = std::move(results_.front());
        results_.pop_front();
        const SlotPointer slot = Find(result.id);
        if (slot && slot->jobActive && slot->job == result.job)
        {
            TakeResult(slot, result);
            drained = true;
        }
    }
    return drained;
}

void AssetLoader::TakeResult(const SlotPointer& slot, Detail::AssetLoadResult& result)
{
    slot->jobActive = false;
    if (result.cancelled)
    {
        return;
    }
    if (slot->reloadRequested)
    {
        slot->reloadRequested = false;
        slot->reloading = slot->resident;
        Enqueue(slot);
        return;
    }
    if (!result.error.empty())
    {
        Fail(*slot, result.error);
        return;
    }
    slot->payload = std::move(result.payload);
    if (slot->discover)
    {
        try
        {
            const CallScope call(*slot);
            AddDependencies(*slot, slot->discover(slot->payload));
        }
        catch (...)
        {
            Fail(*slot, FailureText());
            return;
        }
    }
    // A reload that came from within `discover` restarts the slot instead.
    if (std::exchange(slot->reloadRequested, false))
    {
        slot->payload = {};
        slot->reloading = slot->resident;
        Enqueue(slot);
    }
    else if (slot->state == AssetLoadState::Loading)
    {
        SetState(*slot, AssetLoadState::WaitingForDependencies);
        waiting_.push_back(slot);
    }
}

bool AssetLoader::RunDependencyGate(Scope scope)
{
    bool moved = false;
    for (const SlotPointer& slot : InOrder(waiting_, AssetLoadState::WaitingForDependencies))
    {
        if (scope == Scope::BlockingOnly && !slot->blocking)
        {
            continue;
        }
        const bool goesOn = std::all_of(slot->dependencies.begin(), slot->dependencies.end(),
                                        [&slot](const AssetLoadHandle& dependency) {
                                            return IsTerminal(dependency.slot_->publicState.load()) ||
                                                   WaitsFor(*dependency.slot_, slot->id);
                                        });
        if (goesOn)
        {
            SetState(*slot, AssetLoadState::Uploading);
            uploads_.push_back(slot);
            moved = true;
        }
    }
    return moved;
}

bool AssetLoader::RunPublishPass(Scope scope)
{
    bool published = false;
    for (const SlotPointer& slot : InOrder(uploads_, AssetLoadState::Uploading))
    {
        if (slot->state != AssetLoadState::Uploading || slot->inCall)
        {
            continue;
        }
        if (!slot->blocking)
        {
            if (scope == Scope::BlockingOnly)
            {
                continue;
            }
            const std::uint64_t left =
                config_.uploadBytesPerUpdate - std::min(config_.uploadBytesPerUpdate, bytesThisUpdate_);
            if (publishedThisUpdate_ > 0 && slot->payload.sizeBytes > left)
            {
                break;
            }
        }
        Publish(*slot);
        published = true;
    }
    return published;
}

void AssetLoader::Publish(Slot& slot)
{
    // Counted ahead, so that what it causes meanwhile keeps to the rest of the budget.
    const std::uint64_t size = slot.payload.sizeBytes;
    bytesThisUpdate_ += size;
    try
    {
        const CallScope call(slot);
        const Core::ProfileScope profile("Assets", "AssetLoader Publish");
        if (listener_ != nullptr)
        {
            listener_->Published(slot.id, slot.kind, slot.payload);
        }
        if (slot.publish)
        {
            slot.publish(slot.payload);
        }
    }
    catch (...)
    {
        bytesThisUpdate_ -= std::min(size, bytesThisUpdate_);
        Fail(slot, FailureText());
        return;
    }
    // The asset's own functions may have reset the loader, or asked for a reload, which then goes ahead.
    if (slot.state == AssetLoadState::Unloaded)
    {
        return;
    }
    slot.resident = true;
    slot.published = true;
    slot.version.fetch_add(1);
    ++publishedThisUpdate_;
    if (slot.state != AssetLoadState::Uploading)
    {
        return;
    }
    slot.payload = {};
    slot.blocking = false;
    slot.reloading = false;
    {
        const std::lock_guard lock(slot.errorMutex);
        slot.error.clear();
    }
    SetState(slot, AssetLoadState::Ready);
}

void AssetLoader::Fail(Slot& slot, const std::string& text)
{
    slot.payload = {};
    slot.blocking = false;
    try
    {
        if (slot.fail)
        {
            const CallScope call(slot);
            slot.fail(text);
        }
        else
        {
            Core::Log(Core::LogCategory::Assets, Core::LogLevel::Error,
                      "Failed to load asset " + std::to_string(slot.id) + ": " + text);
        }
    }
    catch (...)
    {
        Core::Log(Core::LogCategory::Assets, Core::LogLevel::Error,
                  "Failed to record the failure of asset " + std::to_string(slot.id) + ": " + FailureText());
    }
    if (slot.reloading && slot.resident)
    {
        slot.reloading = false;
        SetState(slot, AssetLoadState::Ready);
        return;
    }
    {
        const std::lock_guard lock(slot.errorMutex);
        slot.error = text;
    }
    SetState(slot, AssetLoadState::Failed);
}

} // namespace Vornu::Assets
