#pragma once

#include "engine/core/FunctionRef.h"
#include "engine/core/files/FileStamp.h"

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
    /// Links followed, which needs the system. `error` gets why the system couldn't tell, 0 if it could.
    bool IsRegularFile(int& error) const noexcept;

    /// As `ReadFileStamp` gives it, but without another search for the folder. Needs the system.
    std::optional<FileStamp> ReadStamp() const noexcept;

private:
    int folder_;
    const std::string& path_;
    std::string_view name_; // the end of `path_`
    unsigned char type_;
};

/// Calls `visit` for all that is below `folder`, in no particular order. Links are visited and not followed.
/// What can't be read is left out: `fault` gets its path and the error, and the walk goes on. A folder below
/// that has gone since it was found is none of them.
void WalkFolder(const std::filesystem::path& folder, Core::FunctionRef<void(const FolderEntry&)> visit,
                Core::FunctionRef<void(const std::string& path, int error)> fault);

/// Calls `visit` for the names in a folder, in no particular order. Gives 0 or the error that left names out,
/// which is noted by `NoteReadFault`.
int ListFolder(const std::filesystem::path& folder, Core::FunctionRef<void(std::string_view name)> visit);

} // namespace Vornu::Platform
