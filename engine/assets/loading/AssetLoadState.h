#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Vornu::Assets
{

/// Where an asset stands on its way into memory.
enum class AssetLoadState : std::uint8_t
{
    Unloaded,
    Queued,
    Loading,
    WaitingForDependencies,
    Uploading,
    Ready,
    Failed,
};

inline constexpr std::size_t kAssetLoadStateCount = 7;

/// The state's name; "Unknown" for any other value.
std::string_view StateText(AssetLoadState state) noexcept;

/// Nothing is in flight.
constexpr bool IsTerminal(AssetLoadState state) noexcept
{
    return state < AssetLoadState::Queued || state > AssetLoadState::Uploading;
}

} // namespace Vornu::Assets
