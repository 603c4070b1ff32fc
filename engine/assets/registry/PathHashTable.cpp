#include "engine/assets/registry/PathHashTable.h"

#include "engine/core/Hash.h"
#include "engine/core/files/Paths.h"
#include "engine/core/text/Windows1252.h"

namespace Vornu::Assets
{

AssetId PathHashTable::Find(std::uint64_t number, const AssetTables& tables,
                            const std::vector<std::filesystem::path>& otherRoots)
{
    const std::lock_guard lock(mutex_);
    if (revision_ != tables.Revision() || otherRoots_ != otherRoots)
    {
        Build(tables, otherRoots);
        revision_ = tables.Revision();
        otherRoots_ = otherRoots;
    }
    const AssetId* const found = idByHash_.Find(number);
    return found == nullptr ? 0 : *found;
}

void PathHashTable::Build(const AssetTables& tables, const std::vector<std::filesystem::path>& otherRoots)
{
    idByHash_.Clear();
    for (const AssetTables::RecordPointer& record : tables.Records(AssetKind::Unknown))
    {
        const AssetId id = record->id;
        if (record->isBuiltin || record->path.empty())
        {
            continue;
        }
        const std::string suffix = record->isSubAsset ? "#" + record->subKey : std::string();
        Enter(record->path, suffix, id);
        const std::string key = Platform::NormalizedCaseKey(record->path);
        if (!tables.Root().Contains(key))
        {
            continue;
        }
        const std::string relative = key.substr(tables.Root().key.size() + 1);
        for (const std::filesystem::path& root : otherRoots)
        {
            if (!root.empty())
            {
                Enter((root / relative).lexically_normal(), suffix, id);
            }
        }
    }
}

/// The first record keeps a hash.
void PathHashTable::Enter(const std::filesystem::path& path, std::string_view suffix, AssetId id)
{
    const std::string text = Platform::NormalizedCaseKey(path);
    idByHash_.Emplace(Core::Fnv1a(suffix, Core::Fnv1a(text)), id);
    if (const std::optional<std::string> bytes = Core::EncodeWindows1252(text))
    {
        idByHash_.Emplace(Core::Fnv1a(suffix, Core::Fnv1a(*bytes)), id);
    }
}

} // namespace Vornu::Assets
