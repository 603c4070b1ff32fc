#pragma once

#include <filesystem>
#include <string>

namespace Vornu::Assets
{
class AssetManager;
}

namespace Vornu::Upgrade
{

/// Whether what is saved from a loaded file loads and saves again to the same bytes. Touches only temporary
/// files, which are gone afterwards. On false `error` tells why. Throws `std::filesystem::filesystem_error`
/// when the system names no temporary folder.
bool VerifyRoundTrip(const std::filesystem::path& path, Assets::AssetManager& assets, std::string& error);

} // namespace Vornu::Upgrade
