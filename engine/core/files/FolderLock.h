#pragma once

#include "engine/core/files/FileDescriptor.h"

#include <chrono>
#include <filesystem>

namespace Vornu::Platform
{

/// Keeps other programs that ask for the same lock out of a folder until the end of its scope. The lock is
/// advisory: it binds only those who ask. Two locks of one process keep each other out as well.
class FolderLock
{
public:
    enum class Outcome
    {
        Held,
        TimedOut,    // somebody else held it for the whole wait
        Unavailable, // the folder can't be opened, or its file system has no locks
    };

    /// Waits for `patience` at most. Never throws for what the system reports.
    FolderLock(const std::filesystem::path& folder, std::chrono::milliseconds patience);

    Outcome Result() const noexcept { return outcome_; }

private:
    FileDescriptor folder_; // closing it gives the lock back
    Outcome outcome_ = Outcome::Unavailable;
};

} // namespace Vornu::Platform
