#pragma once

#include "engine/assets/identity/AssetId.h"
#include "engine/assets/identity/AssetKind.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Vornu::Assets
{

using AssetBytes = std::vector<std::byte>;

/// The decoded data of one asset; its kind's functions know the type.
struct AssetLoadPayload
{
    std::shared_ptr<void> value;
    /// What the upload budget counts.
    std::uint64_t sizeBytes = 0;
};

struct AssetDependency
{
    AssetId id = 0;
    AssetKind kind = AssetKind::Unknown;
};

/// How to load one asset. Every function may be absent. A function fails by throwing. `read` and `decode` run
/// on threads of the task system, the others in `AssetLoader::Update` or `Wait` with the loader locked.
struct AssetLoadRecipe
{
    /// Not empty: the load fails at once with this text.
    std::string error;
    std::vector<AssetDependency> dependencies;
    std::function<AssetBytes()> read;
    /// Gets no bytes when there is no `read`.
    std::function<AssetLoadPayload(AssetBytes)> decode;
    /// Dependencies that only the decoded data shows.
    std::function<std::vector<AssetDependency>(AssetLoadPayload&)> discover;
    /// Stores the result in its table.
    std::function<void(AssetLoadPayload&)> publish;
    /// Gets the error text. When absent, the loader logs it.
    std::function<void(const std::string&)> fail;
};

/// What the loader asks about the assets of one kind, with the loader locked. One without `prepare` counts as
/// none.
struct AssetLoadHandler
{
    /// The asset is in its table already. Absent: it never is.
    std::function<bool(AssetId)> isResident;
    std::function<AssetLoadRecipe(AssetId)> prepare;
    /// Takes a published asset out of its table. May be absent.
    std::function<void(AssetId)> unload;
};

/// Told, with the loader locked, what enters and leaves memory.
class AssetLoadListener
{
public:
    virtual ~AssetLoadListener() = default;

    /// Before the asset's own `publish`. What it throws fails the asset.
    virtual void Published(AssetId id, AssetKind kind, const AssetLoadPayload& payload) = 0;
    virtual void Unloaded(AssetId id, AssetKind kind) = 0;
};

} // namespace Vornu::Assets
