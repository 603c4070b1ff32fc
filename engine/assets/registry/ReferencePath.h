#pragma once

#include "engine/core/FunctionRef.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace Vornu::Assets
{

inline constexpr std::string_view kContentPrefix = "content:";
inline constexpr std::string_view kPathPrefix = "path:";

/// The path in a `content:` or `path:` text as its bytes stand, or read as Windows-1252; nothing for another
/// form. A `content:` text without a content folder gives nothing either. The path isn't canonical.
std::optional<std::filesystem::path>
DecodeReferencePath(std::string_view text, const std::filesystem::path& contentRoot, bool asWindows1252);

/// The only entry of a folder that has the name in some case; nothing if there is none, or more than one.
using EntryFinder = Core::FunctionRef<std::optional<std::string>(const std::filesystem::path& folder,
                                                                 const std::string& name)>;

/// The one existing path below `root` that differs from `path` in the case of A to Z alone. Components that
/// exist as they stand are taken so. Nothing if there is no such path, or more than one.
std::optional<std::filesystem::path>
FindIgnoringCase(const std::filesystem::path& root, const std::filesystem::path& path, EntryFinder findEntry);

} // namespace Vornu::Assets
