#include "engine/assets/registry/ReferencePath.h"

#include "engine/core/files/Files.h"
#include "engine/core/text/Windows1252.h"

#include <algorithm>
#include <string>

namespace Vornu::Assets
{
namespace
{

namespace fs = std::filesystem;

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

std::optional<fs::path> FindIgnoringCase(const fs::path& root, const fs::path& path, EntryFinder findEntry)
{
    const fs::path relative = path.lexically_normal().lexically_relative(root);
    if (relative.empty() || *relative.begin() == "..")
    {
        return std::nullopt;
    }
    fs::path found = root;
    for (const fs::path& name : relative)
    {
        fs::path next = found / name;
        if (!Platform::PathExists(next))
        {
            const std::optional<std::string> entry = findEntry(found, name.native());
            if (!entry)
            {
                return std::nullopt;
            }
            next = found / *entry;
        }
        found = std::move(next);
    }
    return found;
}

} // namespace Vornu::Assets
