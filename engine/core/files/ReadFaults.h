#pragma once

#include <filesystem>
#include <string>

namespace Vornu::Platform
{

/// Whether an error tells that nothing stands at a path, or that nothing can have such a name; 0 does as
/// well.
bool TellsOfAbsence(int error) noexcept;

/// Notes that the system failed to read or to tell what stands at `path`: a bad disk, too many open files, no
/// permission. What `TellsOfAbsence` is left out. Safe from any thread; keeps `errno`.
void NoteReadFault(const std::filesystem::path& path, int error) noexcept;

/// Sees the faults that any thread notes while it lives. Most readers can only go on without what they
/// couldn't read; whoever must not take the rest for the whole asks here.
class ReadFaultWatch
{
public:
    /// That a place outside of `folder`, a canonical path, is closed to the user counts for no fault.
    explicit ReadFaultWatch(const std::filesystem::path& folder);
    ~ReadFaultWatch();
    ReadFaultWatch(const ReadFaultWatch&) = delete;
    ReadFaultWatch& operator=(const ReadFaultWatch&) = delete;

    /// The first fault, "<path>: <system text>"; empty if there was none.
    std::string First() const;
    /// Its error number; 0 if there was none.
    int FirstError() const noexcept;

private:
    friend void NoteReadFault(const std::filesystem::path& path, int error) noexcept;
    bool Concerns(const std::filesystem::path& path, int error) const;

    std::string root_;
    std::string path_; // of the first fault; empty when there was no memory to keep it
    int error_ = 0;
};

} // namespace Vornu::Platform
