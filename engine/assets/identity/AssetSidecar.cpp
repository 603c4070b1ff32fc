#include "engine/assets/identity/AssetSidecar.h"

#include "engine/core/files/Files.h"
#include "engine/core/files/InputFile.h"
#include "engine/core/files/Paths.h"
#include "engine/core/files/TemporaryFile.h"
#include "engine/core/logging/AccessWarning.h"
#include "engine/core/system/System.h"
#include "engine/core/text/LineReader.h"
#include "engine/core/text/TokenReader.h"

#include <algorithm>
#include <array>

namespace Vornu::Assets
{
namespace
{

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 3> kExtensions = {kSidecarExtension, ".materials", ".cells"};

bool Fail(std::string* error, std::string message)
{
    if (error != nullptr)
    {
        *error = std::move(message);
    }
    return false;
}

fs::path WithAppended(fs::path path, std::string_view extension)
{
    path += extension;
    return path;
}

class SidecarParser
{
public:
    /// False once the text is refused; `Error` tells why.
    bool TakeLine(std::string_view line)
    {
        ++lineNumber_;
        Core::TokenReader tokens(line);
        const std::string_view first = tokens.ReadWord();
        if (first.empty() || first.front() == '#')
        {
            return true;
        }
        if (state_ == State::Header)
        {
            return TakeHeader(first, tokens);
        }
        if (first == "end")
        {
            state_ = State::Header;
            return true;
        }
        return state_ == State::Settings ? TakeSetting(first, tokens) : TakeSubAsset(first, tokens);
    }

    bool Finish()
    {
        if (sidecar_.version == 0)
        {
            return Refuse("Missing vmeta header.");
        }
        return sidecar_.guid.IsValid() || Refuse("Missing vmeta guid.");
    }

    AssetSidecar& Sidecar() noexcept { return sidecar_; }
    const std::string& Error() const noexcept { return error_; }

private:
    enum class State
    {
        Header,
        Settings,
        SubAssets,
    };

    bool Refuse(std::string message) { return Fail(&error_, std::move(message)); }

    bool TakeHeader(std::string_view word, Core::TokenReader& tokens)
    {
        if (word == "vmeta")
        {
            return TakeVersion(tokens);
        }
        if (word == "guid")
        {
            sidecar_.guid = Core::Guid::TryParse(tokens.ReadWord()).value_or(Core::Guid{});
            return sidecar_.guid.IsValid() || Refuse("Invalid vmeta guid.");
        }
        if (word == "importer")
        {
            if (const std::string_view name = tokens.ReadWord(); !name.empty())
            {
                sidecar_.importerName = name;
            }
            tokens.Read(sidecar_.importerVersion);
        }
        else if (word == "settings")
        {
            state_ = State::Settings;
        }
        else if (word == "subassets")
        {
            state_ = State::SubAssets;
        }
        return true;
    }

    bool TakeVersion(Core::TokenReader& tokens)
    {
        std::uint32_t version = 0;
        if (!tokens.Read(version) || version == 0)
        {
            return Refuse("Invalid vmeta version.");
        }
        if (version > AssetSidecar::kVersion)
        {
            return Refuse("vmeta version " + std::to_string(version) + " is newer than this engine reads.");
        }
        sidecar_.version = version;
        return true;
    }

    bool TakeSetting(std::string_view key, Core::TokenReader& tokens)
    {
        std::string value;
        tokens.Read(value);
        sidecar_.settings.emplace_back(key, std::move(value));
        return true;
    }

    bool TakeSubAsset(std::string_view word, Core::TokenReader& tokens)
    {
        AssetSidecarSubAsset sub;
        tokens.Read(sub.name);
        const std::string_view guid = tokens.ReadWord();
        if (!tokens || guid.empty())
        {
            return Refuse("Malformed sub-asset at line " + std::to_string(lineNumber_) + ".");
        }
        sub.kind = KindFromWord(word);
        sub.guid = Core::Guid::TryParse(guid).value_or(Core::Guid{});
        if (sub.kind == AssetKind::Unknown || !sub.guid.IsValid())
        {
            return Refuse("Invalid sub-asset at line " + std::to_string(lineNumber_) + ".");
        }
        sidecar_.subAssets.push_back(std::move(sub));
        return true;
    }

    State state_ = State::Header;
    std::size_t lineNumber_ = 0;
    AssetSidecar sidecar_;
    std::string error_;
};

void AppendQuoted(std::string& out, std::string_view text)
{
    out.push_back('"');
    for (const char c : text)
    {
        if (c == '"' || c == '\\')
        {
            out.push_back('\\');
        }
        out.push_back(c);
    }
    out.push_back('"');
}

std::string_view ImporterWord(const AssetSidecar& sidecar)
{
    return sidecar.importerName.empty() ? "native" : std::string_view(sidecar.importerName);
}

/// The format has no form for some texts, such as one with a line feed. Written all the same, such a sidecar
/// would be refused by its next reader, and the identity in it lost.
bool ReadsBackAlike(const AssetSidecar& sidecar, const std::string& text)
{
    std::optional<AssetSidecar> read = ParseSidecar(text);
    if (read && sidecar.importerName.empty() && read->importerName == ImporterWord(sidecar))
    {
        read->importerName.clear();
    }
    return read == sidecar;
}

bool HoldsBytes(const fs::path& path, std::string_view bytes)
{
    Core::InputFile file(path);
    Core::FileBytes present;
    return file.IsOpen() && file.RegularSize() == bytes.size() && file.ReadAll(present) &&
           present.View() == bytes;
}

/// Of what has the name itself, links not followed.
fs::file_type TypeAt(const fs::path& path)
{
    std::error_code error;
    return fs::symlink_status(path, error).type();
}

bool MoveSidecar(const fs::path& from, const fs::path& to, std::string* error)
{
    if (!Platform::PathExists(from) || Platform::IsSamePath(from, to))
    {
        return true;
    }
    if (Platform::PathExists(to))
    {
        return Fail(error, "Sidecar already exists: " + to.native());
    }
    const Platform::FileResult moved = Platform::MoveToFreeName(from, to);
    return moved.Succeeded() || Fail(error, moved.message);
}

} // namespace

fs::path SidecarPath(const fs::path& asset)
{
    return WithAppended(asset, kSidecarExtension);
}

fs::path AssetPathOfSidecar(const fs::path& sidecar)
{
    const std::string& text = sidecar.native();
    return IsSidecarFile(sidecar) ? fs::path(text.substr(0, text.size() - kSidecarExtension.size()))
                                  : fs::path();
}

bool IsSidecarFile(const fs::path& path)
{
    const std::string_view text = path.native();
    return IsSidecarName(text.substr(text.rfind('/') + 1));
}

bool IsSidecarName(std::string_view fileName)
{
    return LowerExtensionOfName(fileName) == kSidecarExtension &&
           !LowerExtensionOfName(fileName.substr(0, fileName.size() - kSidecarExtension.size())).empty();
}

std::vector<fs::path> ExistingSidecars(const fs::path& asset)
{
    std::vector<fs::path> found;
    for (const std::string_view extension : kExtensions)
    {
        fs::path path = WithAppended(asset, extension);
        if (Platform::PathExists(path))
        {
            found.push_back(std::move(path));
        }
    }
    return found;
}

SidecarReading ReadSidecarFile(const fs::path& path)
{
    SidecarReading reading;
    Core::InputFile file(path);
    if (!file.IsOpen())
    {
        reading.error = "Cannot open sidecar.";
        reading.fault =
            TypeAt(path) == fs::file_type::not_found ? "" : Platform::SystemErrorText(file.Error());
        return reading;
    }
    const std::optional<std::uint64_t> size = file.RegularSize();
    if (!size && !file.Failed())
    {
        reading.error = "The sidecar is not a regular file.";
        reading.fault = "not a regular file";
        return reading;
    }
    Core::FileBytes bytes;
    // A file that tells its size is read in one go; others, such as those of the system, to their end.
    const bool isSized = size && *size > 0 && *size <= kMaxSidecarSize;
    if (isSized)
    {
        bytes.data = std::make_unique_for_overwrite<char[]>(*size);
        bytes.size = file.Read(bytes.data.get(), *size);
    }
    if (isSized ? !file.Failed() : file.ReadAll(bytes, kMaxSidecarSize))
    {
        reading.sidecar = ParseSidecar(bytes.View(), &reading.error);
    }
    else if (file.Failed())
    {
        reading.error = "Failed while reading sidecar.";
        reading.fault = Platform::SystemErrorText(file.Error());
    }
    else
    {
        reading.error = "The sidecar is larger than " + std::to_string(kMaxSidecarSize) + " bytes.";
    }
    return reading;
}

std::optional<AssetSidecar> ReadSidecar(const fs::path& path, std::string* error)
{
    SidecarReading reading = ReadSidecarFile(path);
    if (!reading.sidecar)
    {
        Fail(error, std::move(reading.error));
    }
    return std::move(reading.sidecar);
}

std::optional<AssetSidecar> ParseSidecar(std::string_view text, std::string* error)
{
    SidecarParser parser;
    Core::LineReader lines(text);
    std::string_view line;
    bool good = true;
    while (good && lines.ReadLine(line))
    {
        good = parser.TakeLine(line);
    }
    if (!good || !parser.Finish())
    {
        Fail(error, parser.Error());
        return std::nullopt;
    }
    return std::move(parser.Sidecar());
}

std::string SerializeSidecar(const AssetSidecar& sidecar)
{
    std::string out = "vmeta " + std::to_string(sidecar.version) + "\nguid " + sidecar.guid.ToString() +
                      "\nimporter " + std::string(ImporterWord(sidecar)) + " " +
                      std::to_string(sidecar.importerVersion) + "\nsettings\n";
    for (const auto& [key, value] : sidecar.settings)
    {
        out.append(key).push_back(' ');
        AppendQuoted(out, value);
        out.push_back('\n');
    }
    out += "end\n";
    if (sidecar.subAssets.empty())
    {
        return out;
    }
    out += "subassets\n";
    for (const AssetSidecarSubAsset& sub : sidecar.subAssets)
    {
        out.append(KindWord(sub.kind)).push_back(' ');
        AppendQuoted(out, sub.name);
        out.append(" ").append(sub.guid.ToString()).push_back('\n');
    }
    return out += "end\n";
}

bool WriteSidecar(const fs::path& path, const AssetSidecar& sidecar, std::string* error)
{
    const std::string text = SerializeSidecar(sidecar);
    if (!ReadsBackAlike(sidecar, text))
    {
        return Fail(error, "Cannot write sidecar.");
    }
    if (HoldsBytes(path, text))
    {
        return true;
    }
    const fs::file_type type = TypeAt(path);
    if (type != fs::file_type::regular && type != fs::file_type::not_found)
    {
        return Fail(error, type == fs::file_type::none ? "Cannot write sidecar."
                                                       : "The sidecar is not a regular file.");
    }
    fs::path temporary = WithAppended(path, ".");
    temporary += Core::Guid::Generate().ToString();
    Platform::TemporaryFile file(WithAppended(std::move(temporary), ".tmp"), path);
    if (!file.IsOpen())
    {
        return Fail(error, "Cannot write sidecar.");
    }
    if (!file.Write(text) || !file.Close())
    {
        return Fail(error, "Failed while writing sidecar.");
    }
    // A new sidecar's identity can be derived again, so only one that takes another's place has to be on the
    // disk first.
    Platform::FileResult replaced =
        Platform::ReplaceFileAtomically(file.Path(), path, type == fs::file_type::regular);
    Core::WarnIfNarrowed(replaced, path);
    return replaced.Succeeded() || Fail(error, std::move(replaced.message));
}

AssetSidecar MakeDefaultSidecar(AssetKind kind, const fs::path& asset, const Core::Guid& guid)
{
    constexpr std::array<std::string_view, 4> kModels = {".fbx", ".gltf", ".glb", ".obj"};
    AssetSidecar sidecar;
    sidecar.version = AssetSidecar::kVersion;
    sidecar.guid = guid;
    if (kind == AssetKind::Texture)
    {
        sidecar.importerName = "texture";
        sidecar.settings = {{"encoding", "auto"}, {"max_size", "0"}};
    }
    else if (std::find(kModels.begin(), kModels.end(), LowerExtension(asset)) != kModels.end())
    {
        sidecar.importerName = "model";
    }
    else
    {
        sidecar.importerName = kind == AssetKind::AudioClip ? "audio" : "native";
    }
    return sidecar;
}

bool SetSidecarSetting(AssetSidecar& sidecar, std::string_view key, std::string_view value)
{
    const auto found = std::find_if(sidecar.settings.begin(), sidecar.settings.end(),
                                    [&](const auto& setting) { return setting.first == key; });
    if (found == sidecar.settings.end())
    {
        sidecar.settings.emplace_back(key, value);
        return true;
    }
    if (found->second == value)
    {
        return false;
    }
    found->second = value;
    return true;
}

bool MoveSidecars(const fs::path& oldAsset, const fs::path& newAsset, std::string* error)
{
    bool moved = true;
    for (const std::string_view extension : kExtensions)
    {
        moved &= MoveSidecar(WithAppended(oldAsset, extension), WithAppended(newAsset, extension), error);
    }
    return moved;
}

bool RenameAssetWithSidecars(const fs::path& oldAsset, const fs::path& newAsset, std::string* error)
{
    const Platform::FileResult renamed = Platform::MoveToFreeName(oldAsset, newAsset);
    return renamed.Succeeded() ? MoveSidecars(oldAsset, newAsset, error) : Fail(error, renamed.message);
}

} // namespace Vornu::Assets
