#pragma once

#include "engine/assets/loading/AssetLoadRecipe.h"
#include "engine/assets/loading/AssetLoadState.h"
#include "engine/core/tasks/TaskCounter.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace Vornu::Assets
{

namespace Detail
{
struct AssetLoadSlot;
}

/// A counted reference to an asset that is loaded or being loaded; an asset without any may be unloaded. May
/// outlive the loader. Distinct handles are safe from any thread.
class AssetLoadHandle
{
public:
    AssetLoadHandle() noexcept = default;
    AssetLoadHandle(const AssetLoadHandle& other) noexcept;
    AssetLoadHandle(AssetLoadHandle&& other) noexcept = default;
    AssetLoadHandle& operator=(AssetLoadHandle other) noexcept
    {
        slot_.swap(other.slot_);
        return *this;
    }
    ~AssetLoadHandle();

    explicit operator bool() const noexcept { return slot_ != nullptr; }

    /// 0 for an empty handle.
    AssetId Id() const noexcept;
    /// How often the asset was published.
    std::uint32_t Version() const noexcept;

    friend bool operator==(const AssetLoadHandle&, const AssetLoadHandle&) = default;

private:
    friend class AssetLoader;

    explicit AssetLoadHandle(std::shared_ptr<Detail::AssetLoadSlot> slot) noexcept;

    std::shared_ptr<Detail::AssetLoadSlot> slot_;
};

namespace Detail
{

/// What the loader knows of one asset. All but the atomic members and the error text belongs to whoever holds
/// the loader's mutex.
struct AssetLoadSlot
{
    AssetId id = 0;
    AssetKind kind = AssetKind::Unknown;

    /// `Ready` while resident data is being replaced, else as `state`.
    std::atomic<AssetLoadState> publicState = AssetLoadState::Unloaded;
    std::atomic<std::uint32_t> references = 0;
    std::atomic<std::uint32_t> version = 0;
    std::mutex errorMutex;
    std::string error;

    AssetLoadState state = AssetLoadState::Unloaded;
    std::uint8_t priority = 0;
    std::uint64_t sequence = 0;
    /// Serial number of the current job; a result with another one is stale.
    std::uint64_t job = 0;
    bool pinned = false;
    bool published = false;
    /// The data stands in the kind's table.
    bool resident = false;
    bool blocking = false;
    bool jobActive = false;
    bool reloading = false;
    bool reloadRequested = false;
    /// One of the asset's own functions runs, which may call the loader.
    bool inCall = false;
    std::shared_ptr<std::atomic<bool>> cancelFlag;
    Core::Tasks::CounterHandle counter;

    std::function<std::vector<AssetDependency>(AssetLoadPayload&)> discover;
    std::function<void(AssetLoadPayload&)> publish;
    std::function<void(const std::string&)> fail;
    AssetLoadPayload payload;
    std::vector<AssetLoadHandle> dependencies;
};

} // namespace Detail

inline AssetLoadHandle::AssetLoadHandle(std::shared_ptr<Detail::AssetLoadSlot> slot) noexcept
    : slot_(std::move(slot))
{
    if (slot_)
    {
        slot_->references.fetch_add(1);
    }
}

inline AssetLoadHandle::AssetLoadHandle(const AssetLoadHandle& other) noexcept : AssetLoadHandle(other.slot_)
{
}

inline AssetLoadHandle::~AssetLoadHandle()
{
    if (slot_)
    {
        slot_->references.fetch_sub(1);
    }
}

inline AssetId AssetLoadHandle::Id() const noexcept
{
    return slot_ ? slot_->id : 0;
}

inline std::uint32_t AssetLoadHandle::Version() const noexcept
{
    return slot_ ? slot_->version.load() : 0;
}

} // namespace Vornu::Assets
