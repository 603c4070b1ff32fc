#pragma once

#include "engine/core/FunctionRef.h"
#include "engine/core/files/FileStamp.h"
#include "engine/core/files/Files.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace Vornu::Platform
{

/// What a walk finds, valid until the walk goes on. Looking at it costs a call into the system only where a
/// comment says so.
class FolderEntry
{
public:
    FolderEntry(int folder, const std::string& path, std::string_view name, unsigned char type) noexcept
        : folder_(folder), path_(path), name_(name), type_(type)
    {
    }

    /// The walked folder as it was given, with the names below it.
    const std::string& Path() const noexcept { return path_; }
    std::string_view Name() const noexcept { return name_; }

    bool IsFolder() const noexcept;
    bool IsLink() const noexcept;
    /// Links followed, which needs the system.
    bool IsRegularFile() const noexcept;

    /// As `ReadFileStamp` gives it, but without another search for the folder. Needs the system.
    std::optional<FileStamp> ReadStamp() const noexcept;

private:
    int folder_;
    const std::string& path_;
    std::string_view name_; // the end of `path_`
    unsigned char type_;
};

/// Calls `visit` for all that is below `folder`, in no particular order. Links are visited and not followed.
/// What can't be read ends the walk; the message of a failure names it.
FileResult WalkFolder(const std::filesystem::path& folder, Core::FunctionRef<void(const FolderEntry&)> visit);

} // namespace Vornu::Platform
