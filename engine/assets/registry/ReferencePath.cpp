#include "engine/assets/registry/ReferencePath.h"

#include "engine/core/files/Files.h"
#include "engine/core/files/ReadFaults.h"
#include "engine/core/text/Windows1252.h"

#include <algorithm>
#include <string>
#include <system_error>

namespace Vornu::Assets
{
namespace
{

namespace fs = std::filesystem;

char Lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool EqualIgnoringCase(std::string_view a, std::string_view b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return Lower(x) == Lower(y); });
}

/// The only entry of a folder that has the name in some case.
std::optional<fs::path> FindEntryIgnoringCase(const fs::path& folder, const std::string& name)
{
    std::error_code error;
    std::optional<fs::path> match;
    fs::directory_iterator entries;
    do
    {
        entries = fs::directory_iterator(folder, error);
    } while (error == std::errc::interrupted);
    for (; !error && entries != fs::directory_iterator(); entries.increment(error))
    {
        const fs::path& path = entries->path();
        if (EqualIgnoringCase(path.filename().native(), name))
        {
            if (match)
            {
                return std::nullopt;
            }
            match = path;
        }
    }
    Platform::NoteReadFault(folder, error.value());
    // An entry that wasn't seen could be a second choice.
    return error ? std::nullopt : match;
}

} // namespace

std::optional<fs::path> DecodeReferencePath(std::string_view text, const fs::path& contentRoot,
                                            bool asWindows1252)
{
    const bool isContent = text.starts_with(kContentPrefix);
    if ((!isContent && !text.starts_with(kPathPrefix)) || text.find('\0') != std::string_view::npos ||
        (isContent && contentRoot.empty()))
    {
        return std::nullopt;
    }
    text.remove_prefix(isContent ? kContentPrefix.size() : kPathPrefix.size());
    std::string decoded = asWindows1252 ? Core::DecodeWindows1252(text) : std::string(text);
    std::replace(decoded.begin(), decoded.end(), '\\', '/');
    return isContent ? contentRoot / decoded : fs::path(std::move(decoded));
}

std::optional<fs::path> FindIgnoringCase(const fs::path& root, const fs::path& path)
{
    const fs::path relative = path.lexically_normal().lexically_relative(root);
    if (relative.empty() || *relative.begin() == "..")
    {
        return std::nullopt;
    }
    fs::path found = root;
    for (const fs::path& name : relative)
    {
        std::optional<fs::path> next = found / name;
        if (!Platform::PathExists(*next))
        {
            next = FindEntryIgnoringCase(found, name.native());
        }
        if (!next)
        {
            return std::nullopt;
        }
        found = std::move(*next);
    }
    return found;
}

} // namespace Vornu::Assets
