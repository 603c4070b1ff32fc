#include "engine/assets/registry/AssetReference.h"

#include "engine/assets/registry/ReferencePath.h"
#include "engine/core/files/Files.h"
#include "engine/core/files/Folders.h"
#include "engine/core/files/Paths.h"
#include "engine/core/files/ReadFaults.h"
#include "engine/core/logging/Logger.h"

#include <algorithm>
#include <array>
#include <exception>
#include <optional>
#include <stdexcept>

namespace Vornu::Assets
{
namespace
{

namespace fs = std::filesystem;

constexpr std::string_view kGuidPrefix = "guid:";
constexpr std::string_view kBuiltinPrefix = "builtin:";
constexpr std::string_view kDerivedPrefix = "derived:";
constexpr std::string_view kSubKeyPrefix = "subkey:";

std::optional<Core::Guid> ParseGuidReference(std::string_view text)
{
    const std::optional<Core::Guid> guid = Core::Guid::TryParse(text.substr(kGuidPrefix.size()));
    return guid && guid->IsValid() ? guid : std::nullopt;
}

int HexDigit(char c)
{
    if (c >= '0' && c <= '9')
    {
        return c - '0';
    }
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::optional<std::string> DecodeHex(std::string_view digits)
{
    if (digits.size() % 2 != 0)
    {
        return std::nullopt;
    }
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2)
    {
        const int high = HexDigit(digits[i]);
        const int low = HexDigit(digits[i + 1]);
        if (high < 0 || low < 0)
        {
            return std::nullopt;
        }
        bytes.push_back(static_cast<char>(high * 16 + low));
    }
    return bytes;
}

/// The two parts of a `derived:` text.
struct DerivedReference
{
    std::string_view source;
    std::string_view rest;
};

std::optional<DerivedReference> SplitDerived(std::string_view text)
{
    text.remove_prefix(kDerivedPrefix.size());
    const std::size_t bar = text.find('|');
    return bar == std::string_view::npos
               ? std::nullopt
               : std::optional(DerivedReference{text.substr(0, bar), text.substr(bar + 1)});
}

void WarnOfCase(const AssetRegistry& registry, std::string_view text, const std::string& found)
{
    if (registry.NoteReference(text))
    {
        Core::Log(Core::LogCategory::Assets, Core::LogLevel::Warning,
                  "Asset reference '" + std::string(text) + "' differs in case from " + found);
    }
}

std::optional<fs::path> FindInOtherCase(const AssetRegistry& registry, std::string_view text,
                                        const fs::path& root, const fs::path& path)
{
    const auto findEntry = [&](const fs::path& folder, const std::string& name)
    { return registry.FindEntryIgnoringCase(folder, name); };
    std::optional<fs::path> found =
        text.starts_with(kContentPrefix) ? FindIgnoringCase(root, path, findEntry) : std::nullopt;
    // What only winds its way there is spelled right all the same.
    if (found && *found != path.lexically_normal())
    {
        WarnOfCase(registry, text, found->native());
    }
    return found;
}

/// What a `content:` or `path:` text names; empty for another form.
fs::path ResolveFilePath(const AssetRegistry& registry, std::string_view text, bool* legacyEncoding)
{
    const fs::path root = registry.GetContentRoot();
    const std::optional<fs::path> plain = DecodeReferencePath(text, root, false);
    if (!plain || plain->empty() || Platform::PathExists(*plain))
    {
        return plain ? Platform::CanonicalPath(*plain) : fs::path();
    }
    const fs::path legacy = *DecodeReferencePath(text, root, true);
    const bool isAscii = legacy == *plain;
    std::optional<fs::path> found;
    if (!isAscii && Platform::PathExists(legacy))
    {
        found = legacy;
    }
    else if (std::optional<fs::path> other = FindInOtherCase(registry, text, root, *plain))
    {
        return Platform::CanonicalPath(*other);
    }
    else if (!isAscii)
    {
        found = FindInOtherCase(registry, text, root, legacy);
    }
    if (found && legacyEncoding != nullptr)
    {
        *legacyEncoding = true;
    }
    return Platform::CanonicalPath(found.value_or(*plain));
}

fs::path PathOfGuid(const AssetRegistry& registry, const Core::Guid& guid)
{
    if (const AssetId id = registry.FindByGuid(guid))
    {
        const AssetRegistry::RecordPointer record = registry.FindRecord(id);
        return record ? record->path : fs::path();
    }
    return registry.SourceOfSubGuid(guid).value_or(fs::path());
}

AssetId ResolveDerived(const AssetRegistry& registry, std::string_view text, AssetKind kind)
{
    const std::optional<DerivedReference> parts = SplitDerived(text);
    bool isLegacy = false;
    const fs::path source = parts ? ResolveReferencePath(registry, parts->source, &isLegacy) : fs::path();
    if (source.empty())
    {
        return 0;
    }
    if (parts->rest.starts_with(kSubKeyPrefix))
    {
        const std::optional<std::string> key = DecodeHex(parts->rest.substr(kSubKeyPrefix.size()));
        return key ? registry.FindSubAsset(source, *key, kind) : 0;
    }
    const fs::path legacyChild =
        DecodeReferencePath(parts->rest, registry.GetContentRoot(), true).value_or(fs::path());
    const fs::path child = isLegacy ? legacyChild : ResolveReferencePath(registry, parts->rest);
    AssetId id = 0;
    if (!child.empty())
    {
        id = registry.FindDerivedFile(source, child, false, kind);
        id = id != 0 ? id : registry.FindDerivedFile(source, child, true, kind);
    }
    return id != 0 || legacyChild.empty() ? id : registry.FindDerivedFile(source, legacyChild, false, kind);
}

/// A folder that can't be told is no place to look.
std::vector<fs::path> LegacyRoots()
{
    std::vector<fs::path> roots;
    const auto add = [&](auto&& folder)
    {
        try
        {
            roots.push_back(folder());
        }
        catch (const std::exception&)
        {
            roots.emplace_back();
        }
    };
    add([] { return Core::UserSettingsFolder() / "UnsavedProject" / "Content"; });
    add([] { return Core::DefaultContentFolder(); });
    return roots;
}

/// Behind the last character of the reference that starts at `start`.
std::size_t EndOfReference(std::string_view text, std::size_t start, bool isGuid)
{
    constexpr std::string_view kTerminators("\0\n\r\"", 4);
    return std::min(text.size(), isGuid ? start + kGuidPrefix.size() + Core::Guid::kTextLength
                                        : text.find_first_of(kTerminators, start));
}

/// A path of names alone, none of which has a meaning of its own; nothing for any other.
std::optional<std::string> PlainPath(std::string_view text)
{
    std::string path(text);
    std::replace(path.begin(), path.end(), '\\', '/');
    std::size_t start = 0;
    for (bool isLast = false; !isLast;)
    {
        const std::size_t slash = path.find('/', start);
        isLast = slash == std::string::npos;
        const std::string_view name = std::string_view(path).substr(start, slash - start);
        if (name.empty() || name == "." || name == ".." || name.find('\0') != std::string_view::npos)
        {
            return std::nullopt;
        }
        start = slash + 1;
    }
    return path;
}

AssetId FindReferenced(const AssetRegistry& registry, std::string_view text, AssetKind requiredKind)
{
    if (text.starts_with(kGuidPrefix))
    {
        const std::optional<Core::Guid> guid = ParseGuidReference(text);
        return guid ? registry.FindByGuid(*guid) : 0;
    }
    if (text.starts_with(kBuiltinPrefix))
    {
        return registry.FindBuiltin(text.substr(kBuiltinPrefix.size()));
    }
    if (!IsPathReference(text))
    {
        return 0;
    }
    if (text.starts_with(kContentPrefix))
    {
        const std::optional<std::string> relative = PlainPath(text.substr(kContentPrefix.size()));
        if (const auto answer = relative ? registry.FindPlainPath(*relative) : std::nullopt)
        {
            if (!answer->otherCase.empty())
            {
                WarnOfCase(registry, text, answer->otherCase);
            }
            return answer->id;
        }
    }
    if (const std::optional<AssetId> known = registry.FindAnswer(text, requiredKind))
    {
        return *known;
    }
    const std::uint64_t revision = registry.GetRevision();
    const Platform::ReadFaultWatch faults("/");
    AssetId id = 0;
    if (text.starts_with(kDerivedPrefix))
    {
        id = ResolveDerived(registry, text, requiredKind);
    }
    else if (const fs::path path = ResolveReferencePath(registry, text); !path.empty())
    {
        id = registry.FindByPath(path);
    }
    if (faults.FirstError() == 0) // the next look may tell more
    {
        registry.KeepAnswer(text, requiredKind, id, revision);
    }
    return id;
}

} // namespace

AssetId ResolveAssetReference(const AssetRegistry& registry, std::string_view text, AssetKind requiredKind)
{
    if (text.empty())
    {
        return 0;
    }
    const AssetId id = FindReferenced(registry, text, requiredKind);
    if (id == 0 || registry.IsProvisional(id))
    {
        registry.NoteUnresolvedReference();
    }
    return id;
}

std::string FormatAssetReference(const AssetRegistry& registry, AssetId id)
{
    const AssetRegistry::RecordPointer record = registry.FindRecord(id);
    if (!record)
    {
        return {};
    }
    if (record->isBuiltin)
    {
        return std::string(kBuiltinPrefix) + record->name;
    }
    return record->guid.IsValid() ? std::string(kGuidPrefix) + record->guid.ToString()
                                  : FormatPathReference(registry, record->path);
}

fs::path ResolveReferencePath(const AssetRegistry& registry, std::string_view text, bool* legacyEncoding)
{
    if (text.starts_with(kGuidPrefix))
    {
        const std::optional<Core::Guid> guid = ParseGuidReference(text);
        return guid ? PathOfGuid(registry, *guid) : fs::path();
    }
    if (text.starts_with(kDerivedPrefix))
    {
        // The source of a derived text holds no bar, so this goes one level down at most.
        const std::optional<DerivedReference> parts = SplitDerived(text);
        return parts ? ResolveReferencePath(registry, parts->source, legacyEncoding) : fs::path();
    }
    return ResolveFilePath(registry, text, legacyEncoding);
}

std::string FormatPathReference(const AssetRegistry& registry, const fs::path& path)
{
    if (path.empty())
    {
        return {};
    }
    const fs::path canonical = Platform::CanonicalPath(path);
    const std::optional<fs::path> relative = Platform::RelativeToRoot(registry.GetContentRoot(), canonical);
    if (relative && *relative != ".")
    {
        return std::string(kContentPrefix) + Platform::NormalizedCaseKey(*relative);
    }
    return std::string(kPathPrefix) + Platform::NormalizedCaseKey(canonical);
}

std::vector<std::string> ScanAssetReferences(std::string_view text)
{
    // Every prefix ends at its only colon, so the nearest colon belongs to the nearest prefix.
    constexpr std::array<std::string_view, 3> kPrefixes = {kGuidPrefix, kDerivedPrefix, kContentPrefix};
    std::vector<std::string> found;
    std::size_t from = 0;
    for (std::size_t colon = text.find(':'); colon != std::string_view::npos; colon = text.find(':', colon))
    {
        ++colon;
        const std::string_view before = text.substr(from, colon - from);
        for (const std::string_view prefix : kPrefixes)
        {
            if (before.ends_with(prefix))
            {
                const std::size_t start = colon - prefix.size();
                from = EndOfReference(text, start, prefix == kGuidPrefix);
                found.emplace_back(text.substr(start, from - start));
                colon = from;
                break;
            }
        }
    }
    return found;
}

bool IsPathReference(std::string_view text) noexcept
{
    return text.starts_with(kContentPrefix) || text.starts_with(kPathPrefix) ||
           text.starts_with(kDerivedPrefix);
}

AssetId ResolveLegacyAssetId(const AssetRegistry& registry, std::uint64_t number)
{
    if (number == 0)
    {
        return 0;
    }
    const AssetId id = registry.FindRecord(number) ? number : registry.FindByPathHash(number, LegacyRoots());
    if (id == 0 || registry.IsProvisional(id))
    {
        registry.NoteUnresolvedReference();
    }
    return id;
}

Reflection::SchemaCodecContext MakeSceneCodecContext(const AssetRegistry& registry)
{
    Reflection::SchemaCodecContext context;
    context.assetToText = [registry](AssetId id, const Reflection::AssetTypeInfo& type)
    {
        const AssetRegistry::RecordPointer record = registry.FindRecord(id);
        if (!record || record->kind != static_cast<AssetKind>(type.nativeId))
        {
            throw std::runtime_error("Unregistered asset or mismatched asset type: " + type.name);
        }
        return std::optional(FormatAssetReference(registry, id));
    };
    context.textToAsset = [registry](const std::string& text, const Reflection::AssetTypeInfo& type)
    {
        const auto kind = static_cast<AssetKind>(type.nativeId);
        const AssetId id = ResolveAssetReference(registry, text, kind);
        const AssetRegistry::RecordPointer record = registry.FindRecord(id);
        if (record && record->kind == kind)
        {
            return id;
        }
        if (!record && registry.IsStripped(kind))
        {
            return kStrippedAssetId;
        }
        throw std::runtime_error("Unresolved asset or mismatched asset type: " + type.name + " / " + text);
    };
    return context;
}

} // namespace Vornu::Assets
