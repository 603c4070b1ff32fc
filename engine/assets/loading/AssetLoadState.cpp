#include "engine/assets/loading/AssetLoadState.h"

#include <array>

namespace Vornu::Assets
{
namespace
{

constexpr std::array<std::string_view, kAssetLoadStateCount> kTexts = {
    "Unloaded", "Queued", "Loading", "WaitingForDependencies", "Uploading", "Ready", "Failed",
};

} // namespace

std::string_view StateText(AssetLoadState state) noexcept
{
    const auto index = static_cast<std::size_t>(state);
    return index < kTexts.size() ? kTexts[index] : "Unknown";
}

} // namespace Vornu::Assets
