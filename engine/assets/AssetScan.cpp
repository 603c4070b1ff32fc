#include "engine/assets/AssetScan.h"

#include "engine/core/FileStamp.h"
#include "engine/core/Files.h"
#include "engine/core/Hash.h"
#include "engine/core/Logger.h"
#include "engine/core/Paths.h"
#include "engine/core/System.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace Vornu::Assets
{
namespace
{

namespace fs = std::filesystem;

/// 100-nanosecond units from the start of 1601 to that of 1970.
constexpr std::int64_t kTicksTo1970 = 116'444'736'000'000'000;

std::uint64_t TicksSince1601(std::int64_t nanosecondsSince1970)
{
    constexpr std::int64_t kNanosecondsPerTick = 100;
    std::int64_t ticks = nanosecondsSince1970 / kNanosecondsPerTick;
    ticks -= nanosecondsSince1970 % kNanosecondsPerTick < 0 ? 1 : 0;
    return static_cast<std::uint64_t>(ticks + kTicksTo1970);
}

class FolderWalk
{
public:
    void Run(const fs::path& root)
    {
        try
        {
            for (auto walk = Platform::WalkFolder(root); walk != fs::recursive_directory_iterator();
                 Platform::Advance(walk))
            {
                Visit(*walk);
            }
        }
        catch (const fs::filesystem_error& error)
        {
            scan_.error = error.what();
        }
        SortEntries();
        AttachSidecars();
    }

    FolderScan& Scan() noexcept { return scan_; }

private:
    /// The name comes first, as most files are neither and need no further look.
    void Visit(const fs::directory_entry& found)
    {
        const bool isSidecar = IsSidecarFile(found.path());
        const AssetKind kind = isSidecar ? AssetKind::Unknown : KindFromExtension(found.path());
        std::error_code ignored;
        if ((!isSidecar && kind == AssetKind::Unknown) || !found.is_regular_file(ignored))
        {
            return;
        }
        if (isSidecar)
        {
            AddSidecar(found.path());
        }
        else if (found.is_symlink(ignored))
        {
            scan_.entries.push_back(MakeScanEntry(kind, found.path()));
        }
        else
        {
            AddEntry(kind, found.path());
        }
    }

    /// The root is canonical and the walk follows no links, so the path is canonical as it stands.
    void AddEntry(AssetKind kind, const fs::path& path)
    {
        ScanEntry& entry = scan_.entries.emplace_back();
        entry.path = path;
        entry.key = Platform::NormalizedCaseKey(path);
        entry.kind = kind;
        entry.contentStamp = ContentStamp(path);
        entry.sidecarPath = SidecarPath(path);
    }

    /// On a file system that minds case a sidecar can stand there twice; the usual spelling counts.
    void AddSidecar(const fs::path& path)
    {
        const fs::path asset = AssetPathOfSidecar(path);
        const auto [place, added] = sidecars_.try_emplace(Platform::NormalizedCaseKey(asset), path);
        if (!added && path == SidecarPath(asset))
        {
            place->second = path;
        }
    }

    void SortEntries()
    {
        std::vector<ScanEntry>& entries = scan_.entries;
        std::sort(entries.begin(), entries.end(),
                  [](const ScanEntry& a, const ScanEntry& b)
                  { return std::tie(a.key, a.path.native()) < std::tie(b.key, b.path.native()); });
        // A link and the file that it leads to are one asset.
        const auto isRepeated = [](const ScanEntry& first, const ScanEntry& second)
        {
            if (first.key == second.key && first.path != second.path)
            {
                Core::Log(Core::LogCategory::Assets, Core::LogLevel::Warning,
                          "Ignoring asset file " + second.path.native() + ", which can't be told from " +
                              first.path.native());
            }
            return first.key == second.key;
        };
        entries.erase(std::unique(entries.begin(), entries.end(), isRepeated), entries.end());
    }

    void AttachSidecars()
    {
        for (ScanEntry& entry : scan_.entries)
        {
            if (const auto found = sidecars_.find(entry.key); found != sidecars_.end())
            {
                entry.sidecarPath = std::move(found->second);
                entry.hasSidecarFile = true;
                sidecars_.erase(found);
            }
        }
        for (auto& [key, path] : sidecars_)
        {
            scan_.orphans.push_back(std::move(path));
        }
        std::sort(scan_.orphans.begin(), scan_.orphans.end());
    }

    FolderScan scan_;
    std::unordered_map<std::string, fs::path, Core::TextHash> sidecars_; // by the key of the asset
};

} // namespace

std::string PathKey(const fs::path& path)
{
    return Platform::NormalizedCaseKey(Platform::CanonicalPath(path));
}

std::uint64_t ContentStamp(const fs::path& path) noexcept
{
    const std::optional<Platform::FileStamp> file = Platform::ReadFileStamp(path);
    if (!file)
    {
        return 0;
    }
    std::array<char, 16> bytes{};
    for (const auto& [start, number] :
         {std::pair{std::size_t{0}, file->size}, {std::size_t{8}, TicksSince1601(file->modified)}})
    {
        for (std::size_t i = 0; i < 8; ++i)
        {
            bytes[start + i] = static_cast<char>(number >> (8 * i));
        }
    }
    const std::uint64_t stamp = Core::Fnv1a({bytes.data(), bytes.size()});
    return stamp != 0 ? stamp : 1;
}

ScanEntry MakeScanEntry(AssetKind kind, const fs::path& path)
{
    ScanEntry entry;
    entry.path = Platform::CanonicalPath(path);
    entry.key = Platform::NormalizedCaseKey(entry.path);
    entry.kind = kind;
    entry.contentStamp = ContentStamp(entry.path);
    entry.sidecarPath = SidecarPath(entry.path);
    entry.hasSidecarFile = Platform::PathExists(entry.sidecarPath);
    return entry;
}

FolderScan ScanContentFolder(const fs::path& root)
{
    FolderWalk walk;
    walk.Run(root);
    return std::move(walk.Scan());
}

} // namespace Vornu::Assets
