#pragma once

#include <cstddef>
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

/// Sees the faults that are noted from its construction on, by any thread. Most readers can only go on
/// without what they couldn't read; whoever must not take the rest for the whole asks here.
class ReadFaultWatch
{
public:
    ReadFaultWatch();

    /// The first fault, "<path>: <system text>"; empty if there was none. That a place outside of `folder` is
    /// closed to the user counts for none.
    std::string First(const std::filesystem::path& folder) const;

private:
    std::size_t begin_;
};

} // namespace Vornu::Platform
