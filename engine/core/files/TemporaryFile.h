#pragma once

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
    /// Creates the file, or empties the one that is there. A link at `path` is refused.
    explicit TemporaryFile(std::filesystem::path path);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    bool IsOpen() const noexcept { return file_.IsOpen(); }

    /// Appends all of `bytes`. False, without writing, once something has failed.
    bool Write(std::string_view bytes) noexcept;

    /// Nothing has failed so far.
    bool Good() const noexcept { return error_ == 0; }

    /// Closes the file and tells whether everything went well, the closing included.
    bool Close() noexcept;

    const std::filesystem::path& Path() const noexcept { return path_; }

    /// The system's text of the first failure; empty if there was none.
    std::string ErrorText() const;

private:
    bool Record(int error) noexcept;

    std::filesystem::path path_;
    std::filesystem::path absolutePath_;
    FileDescriptor file_;
    int error_ = 0;
    int slot_ = kNoTemporarySlot;
    bool created_ = false; // and known by the two numbers
    dev_t device_ = 0;
    ino_t inode_ = 0;
};

} // namespace Vornu::Platform
