#include "engine/assets/cooked/CookedManifest.h"

#include "engine/assets/cooked/CookedContainer.h"
#include "engine/assets/identity/ContentHash.h"
#include "engine/core/files/InputFile.h"
#include "engine/core/files/Paths.h"
#include "engine/core/text/LineReader.h"
#include "engine/core/text/TokenReader.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <optional>
#include <span>
#include <string_view>
#include <system_error>

namespace Vornu::Assets
{
namespace
{

constexpr std::string_view kHeaderWord = "vornu_cooked_manifest";
constexpr char kManifestName[] = "CookedAssetManifest.vmanifest";
constexpr std::uint32_t kGuidVersion = 2;  // the first that names assets by GUID
constexpr std::uint32_t kHashVersion = 3;  // the first with hashes and dependencies
constexpr std::size_t kMaxReserved = 4096; // dependencies; the others arrive as lines
constexpr std::uint64_t kMaxManifestSize = std::uint64_t{256} * 1024 * 1024;

/// By kind number.
constexpr std::string_view kKindNames[] = {"Unknown",
                                           "Mesh",
                                           "Scene",
                                           "Material",
                                           "Texture",
                                           "AudioClip",
                                           "UiDocument",
                                           "Skeleton",
                                           "Rig",
                                           "AnimationClip",
                                           "AnimatorController",
                                           "Prefab",
                                           "VornuNavMesh",
                                           "BehaviorTree",
                                           "ImageDocument",
                                           "ProceduralTexture",
                                           "VectorField",
                                           "VfxEffect",
                                           "RigDefinition",
                                           "InputMap",
                                           "World"};

std::string_view KindName(AssetKind kind)
{
    const auto index = static_cast<std::size_t>(kind);
    return kKindNames[index < std::size(kKindNames) ? index : 0];
}

AssetKind KindFromName(std::string_view name)
{
    const auto found = std::find(std::begin(kKindNames), std::end(kKindNames), name);
    return static_cast<AssetKind>(found == std::end(kKindNames) ? 0 : found - std::begin(kKindNames));
}

bool ReadPath(Core::TokenReader& tokens, std::filesystem::path& path)
{
    std::string text;
    if (!tokens.Read(text))
    {
        return false;
    }
    path = text;
    return true;
}

bool ReadHash(Core::TokenReader& tokens, std::uint64_t& hash)
{
    const std::optional<std::uint64_t> parsed = ParseHashText(tokens.ReadWord());
    hash = parsed.value_or(0);
    return parsed.has_value();
}

bool ReadFlag(Core::TokenReader& tokens, bool& flag)
{
    const std::string_view word = tokens.ReadWord();
    flag = word == "1";
    return flag || word == "0";
}

bool ReadIdentity(Core::TokenReader& tokens, std::uint32_t version, CookedManifestAsset& asset)
{
    if (version < kGuidVersion)
    {
        return static_cast<bool>(tokens.Read(asset.id));
    }
    asset.guid = Core::Guid::TryParse(tokens.ReadWord()).value_or(Core::Guid());
    return static_cast<bool>(tokens);
}

bool ReadAsset(Core::TokenReader& tokens, std::uint32_t version, CookedManifestAsset& asset)
{
    if (!ReadIdentity(tokens, version, asset))
    {
        return false;
    }
    asset.kind = KindFromName(tokens.ReadWord());
    if (!tokens.Read(asset.name) || !ReadPath(tokens, asset.firstPath) ||
        !ReadPath(tokens, asset.secondPath) || !ReadPath(tokens, asset.thirdPath) ||
        !tokens.Read(asset.text).Read(asset.firstNumber).Read(asset.secondNumber) ||
        !ReadFlag(tokens, asset.flag))
    {
        return false;
    }
    if (version < kHashVersion)
    {
        return true;
    }
    std::uint64_t dependencyCount = 0;
    if (!ReadHash(tokens, asset.firstHash) || !ReadHash(tokens, asset.secondHash) ||
        !tokens.Read(asset.secondText) || !ReadHash(tokens, asset.thirdHash) ||
        !tokens.Read(asset.thirdText).Read(asset.number32).Read(dependencyCount))
    {
        return false;
    }
    asset.dependencies.reserve(std::min<std::uint64_t>(dependencyCount, kMaxReserved));
    return true;
}

bool ReadDependency(Core::TokenReader& tokens, CookedManifest& manifest)
{
    CookedManifestDependency dependency;
    if (manifest.assets.empty() || !ReadPath(tokens, dependency.path) || !ReadHash(tokens, dependency.hash))
    {
        return false;
    }
    manifest.assets.back().dependencies.push_back(std::move(dependency));
    return true;
}

/// Reads one line behind the header; the message of what is wrong with it, empty when nothing is.
std::string ReadManifestLine(std::string_view line, CookedManifest& manifest)
{
    Core::TokenReader tokens(line);
    const std::string_view word = tokens.ReadWord();
    if (word == "platform")
    {
        tokens.Read(manifest.platform);
    }
    else if (word == "content_root")
    {
        ReadPath(tokens, manifest.contentRoot);
    }
    else if (word == "output_root")
    {
        ReadPath(tokens, manifest.outputRoot);
    }
    else if (word == "cooker_version")
    {
        tokens.Read(manifest.cookerVersion);
    }
    else if (word == "require_cooked_scenes")
    {
        tokens.Read(manifest.requireCookedScenes);
    }
    else if (word == "asset" && !ReadAsset(tokens, manifest.version, manifest.assets.emplace_back()))
    {
        return "Malformed cooked asset manifest line: " + std::string(line);
    }
    else if (word == "dependency" && !ReadDependency(tokens, manifest))
    {
        return "Malformed cooked asset manifest dependency: " + std::string(line);
    }
    return {};
}

/// A device may never end, and a line of a broken file may take all memory.
bool HasReadableSize(Core::InputFile& file)
{
    const std::optional<std::uint64_t> size = file.RegularSize();
    return size && *size <= kMaxManifestSize;
}

std::string ReadManifest(const std::filesystem::path& path, CookedManifest& manifest)
{
    Core::InputFile file(path);
    if (!file.IsOpen())
    {
        return "Failed to open cooked asset manifest: " + path.native();
    }
    if (!HasReadableSize(file))
    {
        return "Failed to read cooked asset manifest: " + path.native();
    }
    Core::LineReader lines(file);
    std::string_view line;
    lines.ReadLine(line);
    Core::TokenReader header(line);
    std::uint32_t version = 0;
    if (header.ReadWord() != kHeaderWord || !header.Read(version) || version < 1 ||
        version > CookedManifest::kLatestVersion)
    {
        return "Invalid cooked asset manifest header: " + path.native();
    }
    manifest = CookedManifest();
    manifest.version = version;
    while (lines.ReadLine(line))
    {
        std::string fault = ReadManifestLine(line, manifest);
        if (!fault.empty())
        {
            return fault;
        }
    }
    return lines.Failed() ? "Failed to read cooked asset manifest: " + path.native() : std::string();
}

std::string Quoted(std::string_view text)
{
    std::string quoted = "\"";
    for (const char c : text)
    {
        if (c == '"' || c == '\\')
        {
            quoted.push_back('\\');
        }
        quoted.push_back(c);
    }
    return quoted + "\"";
}

std::string AssetLine(const CookedManifestAsset& asset, std::uint32_t version)
{
    std::string line = "asset ";
    line += version < kGuidVersion ? std::to_string(asset.id) : asset.guid.ToString();
    line.append(" ").append(KindName(asset.kind)).append(" ").append(Quoted(asset.name));
    for (const std::filesystem::path* const path : {&asset.firstPath, &asset.secondPath, &asset.thirdPath})
    {
        line.append(" ").append(Quoted(path->generic_string()));
    }
    line.append(" ").append(Quoted(asset.text));
    line.append(" ").append(std::to_string(asset.firstNumber));
    line.append(" ").append(std::to_string(asset.secondNumber));
    line.append(asset.flag ? " 1" : " 0");
    if (version >= kHashVersion)
    {
        line.append(" ").append(HashText(asset.firstHash)).append(" ").append(HashText(asset.secondHash));
        line.append(" ").append(Quoted(asset.secondText));
        line.append(" ").append(HashText(asset.thirdHash)).append(" ").append(Quoted(asset.thirdText));
        line.append(" ").append(std::to_string(asset.number32));
        line.append(" ").append(std::to_string(asset.dependencies.size()));
    }
    return line + "\n";
}

std::string ManifestText(const CookedManifest& manifest)
{
    std::string text(kHeaderWord);
    text.append(" ").append(std::to_string(manifest.version)).append("\n");
    text.append("platform ").append(Quoted(manifest.platform)).append("\n");
    if (manifest.version >= kHashVersion)
    {
        text.append("cooker_version ").append(std::to_string(manifest.cookerVersion)).append("\n");
    }
    text.append("content_root ").append(Quoted(manifest.contentRoot.generic_string())).append("\n");
    text.append("output_root ").append(Quoted(manifest.outputRoot.generic_string())).append("\n");
    text += manifest.requireCookedScenes ? "require_cooked_scenes 1\n" : "";
    for (const CookedManifestAsset& asset : manifest.assets)
    {
        text += AssetLine(asset, manifest.version);
        for (const CookedManifestDependency& dependency : asset.dependencies)
        {
            if (manifest.version >= kHashVersion)
            {
                text.append("dependency ").append(Quoted(dependency.path.generic_string()));
                text.append(" ").append(HashText(dependency.hash)).append("\n");
            }
        }
    }
    return text;
}

/// What the head of a manifest says, in front of its assets.
bool ReadRequirement(const std::filesystem::path& path)
{
    constexpr std::string_view kRequirement = "require_cooked_scenes ";
    Core::InputFile file(path);
    if (!file.IsOpen() || !HasReadableSize(file))
    {
        return false;
    }
    Core::LineReader lines(file);
    std::string_view line;
    while (lines.ReadLine(line) && !line.starts_with("asset "))
    {
        if (line.starts_with(kRequirement))
        {
            return line.substr(kRequirement.size()).starts_with('1');
        }
    }
    return false;
}

} // namespace

bool ReadCookedManifest(const std::filesystem::path& path, CookedManifest& manifest, std::string* error)
{
    std::string fault = ReadManifest(path, manifest);
    const bool read = fault.empty();
    if (error != nullptr)
    {
        *error = std::move(fault);
    }
    return read;
}

bool WriteCookedManifest(const std::filesystem::path& path, const CookedManifest& manifest,
                         std::string* error)
{
    const std::string text = ManifestText(manifest);
    std::string reason;
    if (WriteFileAtomically(path, std::as_bytes(std::span(text)), &reason))
    {
        return true;
    }
    if (error != nullptr)
    {
        *error = "Failed to write cooked asset manifest: " + reason;
    }
    return false;
}

bool RequiresCookedScenes(const std::filesystem::path& contentRoot)
{
    struct Answer
    {
        std::filesystem::file_time_type time;
        bool required = false;
    };
    static std::mutex mutex;
    static std::map<std::string, Answer> answers;

    const std::filesystem::path path = contentRoot / kManifestName;
    std::error_code error;
    const std::filesystem::file_time_type time = std::filesystem::last_write_time(path, error);
    if (error)
    {
        return false;
    }
    const std::string key = Platform::NormalizedCaseKey(path);
    {
        const std::lock_guard lock(mutex);
        const auto found = answers.find(key);
        if (found != answers.end() && found->second.time == time)
        {
            return found->second.required;
        }
    }
    const bool required = ReadRequirement(path);
    const std::lock_guard lock(mutex);
    answers[key] = {time, required};
    return required;
}

} // namespace Vornu::Assets
