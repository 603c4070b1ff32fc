#pragma once

#include "engine/core/files/FileAccess.h"
#include "engine/core/files/FileDescriptor.h"
#include "engine/core/system/Signals.h"

#include <filesystem>
#include <string>
#include <string_view>

#include <sys/types.h>

namespace Vornu::Platform
{

/// A new file that is gone at the end of its scope unless it was moved elsewhere, for instance by
/// `ReplaceFileAtomically`. A fatal signal removes it as well, once `InstallTemporaryFileCleanup` was called.
/// One thread at a time.
class TemporaryFile
{
public:
    /// Creates the file, or empties the one that is there. A link at `path` is refused. The file is private
    /// while it is written. If nothing is at `target`, the place that it is meant for, `Close` gives it the
    /// access of a new file within `limit`; a file there passes its own on when it is replaced.
    TemporaryFile(std::filesystem::path path, std::filesystem::path target, const AccessLimit& limit = {});
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    bool IsOpen() const noexcept { return file_.IsOpen(); }

    /// Appends all of `bytes`. False, without writing, once something has failed.
    bool Write(std::string_view bytes) noexcept;

    /// Nothing has failed so far.
    bool Good() const noexcept { return error_ == 0; }

    /// Closes the file and tells whether everything went well, the closing included.
    bool Close();

    const std::filesystem::path& Path() const noexcept { return path_; }

    /// The system's text of the first failure; empty if there was none.
    std::string ErrorText() const;

private:
    bool Record(int error) noexcept;

    std::filesystem::path path_;
    std::filesystem::path absolutePath_;
    std::filesystem::path target_;
    AccessLimit limit_;
    FileDescriptor file_;
    int error_ = 0;
    int slot_ = kNoTemporarySlot;
    bool created_ = false; // and known by the two numbers
    dev_t device_ = 0;
    ino_t inode_ = 0;
};

} // namespace Vornu::Platform
