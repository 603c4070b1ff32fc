#include "engine/assets/registry/AssetScan.h"

#include "engine/core/Hash.h"
#include "engine/core/files/FileStamp.h"
#include "engine/core/files/Files.h"
#include "engine/core/files/FolderWalk.h"
#include "engine/core/files/Paths.h"
#include "engine/core/files/ReadFaults.h"
#include "engine/core/logging/Logger.h"
#include "engine/core/system/System.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <tuple>
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

std::uint64_t StampOf(const std::optional<Platform::FileStamp>& file)
{
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

/// The key of a path if it is another text.
std::string OtherKey(const std::string& path)
{
    return path.find('\\') == std::string::npos ? std::string() : Platform::NormalizedCaseKey(path);
}

class ContentScan
{
public:
    void Run(const fs::path& root)
    {
        Platform::WalkFolder(
            root, [this](const Platform::FolderEntry& found) { Visit(found); },
            [this](const std::string& path, int error) { NoteUnread(path, error); });
        SortEntries();
        AttachSidecars();
    }

    FolderScan& Result() noexcept { return scan_; }

private:
    struct FoundSidecar
    {
        std::string path;
        std::string otherKey; // empty where the key is the path

        std::string_view AssetKey() const
        {
            const std::string_view key = otherKey.empty() ? path : otherKey;
            return key.substr(0, key.size() - kSidecarExtension.size());
        }
    };

    /// The name comes first, as most files are neither and need no further look.
    void Visit(const Platform::FolderEntry& found)
    {
        const std::string_view name = found.Name();
        const bool isSidecar = IsSidecarName(name);
        const AssetKind kind = isSidecar ? AssetKind::Unknown : KindFromName(name);
        if (isSidecar)
        {
            // Whatever it is, it has the name; who reads it finds out.
            sidecars_.push_back({found.Path(), OtherKey(found.Path())});
            return;
        }
        int error = 0;
        if (kind == AssetKind::Unknown || !found.IsRegularFile(error))
        {
            NoteUnread(found.Path(), error);
        }
        else if (found.IsLink())
        {
            AddLinked(kind, found.Path());
        }
        else
        {
            AddEntry(kind, found);
        }
    }

    /// A link that the system can't follow now may lead to a file that has its identity elsewhere.
    void AddLinked(AssetKind kind, const std::string& link)
    {
        std::error_code error;
        const fs::path path = Platform::CanonicalPath(link, error);
        if (error)
        {
            NoteUnread(link, error.value());
            return;
        }
        scan_.entries.push_back(MakeScanEntry(kind, path));
    }

    void NoteUnread(const std::string& path, int error)
    {
        // A path that is too long for the system is there all the same.
        if (error == ENAMETOOLONG || !Platform::TellsOfAbsence(error))
        {
            scan_.unread.Add(path, Platform::SystemErrorText(error));
        }
    }

    /// The root is canonical and the walk follows no links, so the path is canonical as it stands.
    void AddEntry(AssetKind kind, const Platform::FolderEntry& found)
    {
        ScanEntry& entry = scan_.entries.emplace_back();
        entry.path = found.Path();
        entry.otherKey = OtherKey(found.Path());
        entry.kind = kind;
        entry.contentStamp = StampOf(found.ReadStamp());
    }

    void SortEntries()
    {
        std::vector<ScanEntry>& entries = scan_.entries;
        std::sort(entries.begin(), entries.end(),
                  [](const ScanEntry& a, const ScanEntry& b)
                  {
                      // Of a file and links to it by names of other kinds, its own name says what it is.
                      const auto isOther = [](const ScanEntry& entry)
                      { return entry.kind != KindFromExtension(entry.path); };
                      const auto order = std::tie(a.Key(), a.path) <=> std::tie(b.Key(), b.path);
                      return order != 0 ? order < 0
                                        : std::pair(isOther(a), a.kind) < std::pair(isOther(b), b.kind);
                  });
        // A link and the file that it leads to are one asset.
        const auto isRepeated = [](const ScanEntry& first, const ScanEntry& second)
        {
            if (first.Key() == second.Key() && first.path != second.path)
            {
                Core::Log(Core::LogCategory::Assets, Core::LogLevel::Warning,
                          "Ignoring asset file " + second.path + ", which can't be told from " + first.path);
            }
            return first.Key() == second.Key();
        };
        entries.erase(std::unique(entries.begin(), entries.end(), isRepeated), entries.end());
    }

    /// Entries and sidecars stand in the order of the same keys, so one pass over both joins them.
    void AttachSidecars()
    {
        // On a file system that minds case a sidecar can stand there twice. The usual spelling counts, which
        // is the first one this way, as lower case is behind upper case.
        std::sort(sidecars_.begin(), sidecars_.end(),
                  [](const FoundSidecar& a, const FoundSidecar& b)
                  {
                      const int order = a.AssetKey().compare(b.AssetKey());
                      return order < 0 || (order == 0 && b.path < a.path);
                  });
        const auto isRepeated = [](const FoundSidecar& a, const FoundSidecar& b)
        { return a.AssetKey() == b.AssetKey(); };
        sidecars_.erase(std::unique(sidecars_.begin(), sidecars_.end(), isRepeated), sidecars_.end());

        auto next = sidecars_.begin();
        for (ScanEntry& entry : scan_.entries)
        {
            for (; next != sidecars_.end() && next->AssetKey() < entry.Key(); ++next)
            {
                scan_.orphans.emplace_back(std::move(next->path));
            }
            if (next != sidecars_.end() && next->AssetKey() == entry.Key())
            {
                if (!next->path.ends_with(kSidecarExtension) || !next->path.starts_with(entry.path))
                {
                    entry.otherSidecarPath = std::move(next->path);
                }
                entry.hasSidecarFile = true;
                ++next;
            }
        }
        for (; next != sidecars_.end(); ++next)
        {
            scan_.orphans.emplace_back(std::move(next->path));
        }
    }

    FolderScan scan_;
    std::vector<FoundSidecar> sidecars_;
};

} // namespace

void UnreadParts::Add(const std::string& path, const std::string& cause)
{
    if (path_.empty() || path < path_)
    {
        path_ = path;
        cause_ = cause;
    }
}

std::string PathKey(const fs::path& path)
{
    return Platform::NormalizedCaseKey(Platform::CanonicalPath(path));
}

std::uint64_t ContentStamp(const fs::path& path) noexcept
{
    return StampOf(Platform::ReadFileStamp(path));
}

ScanEntry MakeScanEntry(AssetKind kind, const fs::path& path)
{
    ScanEntry entry;
    entry.path = Platform::CanonicalPath(path);
    entry.otherKey = OtherKey(entry.path);
    entry.kind = kind;
    entry.contentStamp = ContentStamp(entry.path);
    std::error_code ignored; // what can't be told will show when it is read
    entry.hasSidecarFile =
        fs::symlink_status(entry.SidecarFile(), ignored).type() != fs::file_type::not_found;
    return entry;
}

FolderScan ScanContentFolder(const fs::path& root)
{
    ContentScan scan;
    scan.Run(root);
    return std::move(scan.Result());
}

} // namespace Vornu::Assets
