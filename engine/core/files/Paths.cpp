#include "engine/core/files/Paths.h"

#include "engine/core/files/ReadFaults.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace fs = std::filesystem;

namespace Vornu::Platform
{
namespace
{

/// The longest part of `path` that has a long form, in that form, with the rest behind it.
fs::path ExpandLongestPrefix(const fs::path& path)
{
    fs::path prefix = path;
    fs::path rest;
    while (!prefix.empty())
    {
        if (const std::optional<fs::path> expanded = LongPathName(prefix))
        {
            return rest.empty() ? *expanded : *expanded / rest;
        }
        if (!prefix.has_relative_path())
        {
            break;
        }
        rest = rest.empty() ? prefix.filename() : prefix.filename() / rest;
        prefix = prefix.parent_path();
    }
    return path;
}

} // namespace

fs::path CanonicalPath(const fs::path& path)
{
    std::error_code ignored;
    return CanonicalPath(path, ignored);
}

fs::path CanonicalPath(const fs::path& path, std::error_code& error)
{
    error.clear();
    if (path.empty())
    {
        return {};
    }
    fs::path result = fs::absolute(path, error);
    if (error || result.empty())
    {
        result = path;
    }
    // The system alone knows where ".." behind a link leads; what doesn't exist has none.
    fs::path canonical = fs::weakly_canonical(result, error);
    NoteReadFault(result, error.value());
    result = error || canonical.empty() ? ExpandLongestPrefix(result) : std::move(canonical);
    error = TellsOfAbsence(error.value()) ? std::error_code() : error;
    result = result.lexically_normal();
    while (!result.has_filename() && result.has_relative_path())
    {
        result = result.parent_path();
    }
    return result;
}

std::string NormalizedCaseKey(const fs::path& path)
{
    std::string key = path.string();
    std::replace(key.begin(), key.end(), '\\', '/');
    return key;
}

bool IsSamePath(const fs::path& a, const fs::path& b)
{
    if (a.empty() || b.empty())
    {
        return a.empty() && b.empty();
    }
    return NormalizedCaseKey(CanonicalPath(a)) == NormalizedCaseKey(CanonicalPath(b));
}

std::optional<fs::path> RelativeToRoot(const fs::path& root, const fs::path& path)
{
    if (root.empty() || path.empty())
    {
        return std::nullopt;
    }
    const fs::path canonicalRoot = CanonicalPath(root);
    const fs::path canonicalPath = CanonicalPath(path);
    const std::string rootKey = NormalizedCaseKey(canonicalRoot);
    const std::string pathKey = NormalizedCaseKey(canonicalPath);
    if (!IsPathUnder(rootKey, pathKey))
    {
        return std::nullopt;
    }
    if (rootKey == pathKey)
    {
        return fs::path(".");
    }
    auto part = canonicalPath.begin();
    for (auto i = canonicalRoot.begin(); i != canonicalRoot.end() && part != canonicalPath.end(); ++i)
    {
        ++part;
    }
    fs::path relative;
    for (; part != canonicalPath.end(); ++part)
    {
        relative /= *part;
    }
    return relative.empty() ? fs::path(".") : relative;
}

bool IsPathUnder(std::string_view rootKey, std::string_view key)
{
    if (rootKey.empty() || !key.starts_with(rootKey))
    {
        return false;
    }
    return rootKey.size() == key.size() || rootKey.ends_with('/') || key[rootKey.size()] == '/';
}

std::optional<fs::path> LongPathName(const fs::path&)
{
    return std::nullopt;
}

std::optional<fs::path> ShortPathName(const fs::path&)
{
    return std::nullopt;
}

std::optional<std::filesystem::path> FollowLinks(const std::filesystem::path& path)
{
    constexpr int kMaxLinks = 40; // as many as the system follows
    std::filesystem::path current = path;
    for (int i = 0; i <= kMaxLinks; ++i)
    {
        std::error_code error;
        const std::filesystem::path target = std::filesystem::read_symlink(current, error);
        if (error)
        {
            const bool isNoLink = error == std::errc::invalid_argument ||
                                  error == std::errc::no_such_file_or_directory ||
                                  error == std::errc::not_a_directory;
            return isNoLink ? std::optional(current) : std::nullopt;
        }
        current = current.parent_path() / target;
    }
    return std::nullopt;
}

} // namespace Vornu::Platform
