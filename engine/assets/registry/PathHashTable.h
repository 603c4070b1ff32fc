#pragma once

#include "engine/assets/registry/AssetTables.h"
#include "engine/core/Hash.h"
#include "engine/core/OrderedMap.h"

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Vornu::Assets
{

/// Finds assets by hashes of their paths, as old scenes name them. Safe from any thread as long as the tables
/// stay as they are.
class PathHashTable
{
public:
    /// 0 when no asset has the hash. Built when the tables or the roots have changed since the last call.
    AssetId Find(std::uint64_t number, const AssetTables& tables,
                 const std::vector<std::filesystem::path>& otherRoots);

private:
    void Build(const AssetTables& tables, const std::vector<std::filesystem::path>& otherRoots);
    void Enter(const std::filesystem::path& path, std::string_view suffix, AssetId id);

    std::mutex mutex_;
    /// Names of files make these hashes, so another one that nobody can foretell finds them.
    struct KeyedNumberHash
    {
        std::size_t operator()(std::uint64_t number) const noexcept { return Core::KeyedHash(number, 0); }
    };
    Core::OrderedMap<std::uint64_t, AssetId, KeyedNumberHash> idByHash_;
    std::optional<std::uint64_t> revision_; // of the last build
    std::vector<std::filesystem::path> otherRoots_;
};

} // namespace Vornu::Assets
