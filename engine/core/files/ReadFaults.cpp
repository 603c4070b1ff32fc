#include "engine/core/files/ReadFaults.h"

#include "engine/core/files/Paths.h"
#include "engine/core/system/System.h"

#include <cerrno>
#include <exception>
#include <mutex>
#include <system_error>
#include <vector>

namespace Vornu::Platform
{
namespace
{

struct Watches
{
    std::mutex mutex;
    std::vector<ReadFaultWatch*> list;
};

Watches& ActiveWatches()
{
    static auto* const watches = new Watches; // stays until the process ends
    return *watches;
}

} // namespace

bool TellsOfAbsence(int error) noexcept
{
    switch (error)
    {
    case 0:
    case ENOENT:
    case ENOTDIR:
    case ENAMETOOLONG:
    case ELOOP:
    case EINVAL:
    case EILSEQ:
    case EISDIR:
    case ENXIO:
        return true;
    default:
        return false;
    }
}

void NoteReadFault(const std::filesystem::path& path, int error) noexcept
{
    if (TellsOfAbsence(error))
    {
        return;
    }
    const int formerError = errno;
    Watches& watches = ActiveWatches();
    const std::lock_guard lock(watches.mutex);
    for (ReadFaultWatch* const watch : watches.list)
    {
        try
        {
            if (watch->error_ == 0 && watch->Concerns(path, error))
            {
                watch->error_ = error;
                watch->path_ = path.native();
            }
        }
        catch (const std::exception&) // without memory it counts for every watch
        {
            watch->error_ = error;
        }
    }
    errno = formerError;
}

ReadFaultWatch::ReadFaultWatch(const std::filesystem::path& folder) : root_(NormalizedCaseKey(folder))
{
    Watches& watches = ActiveWatches();
    const std::lock_guard lock(watches.mutex);
    watches.list.push_back(this);
}

ReadFaultWatch::~ReadFaultWatch()
{
    Watches& watches = ActiveWatches();
    const std::lock_guard lock(watches.mutex);
    std::erase(watches.list, this);
}

std::string ReadFaultWatch::First() const
{
    const std::lock_guard lock(ActiveWatches().mutex);
    return error_ == 0 ? std::string() : path_ + ": " + SystemErrorText(error_);
}

int ReadFaultWatch::FirstError() const noexcept
{
    const std::lock_guard lock(ActiveWatches().mutex);
    return error_;
}

bool ReadFaultWatch::Concerns(const std::filesystem::path& path, int error) const
{
    if (error != EACCES && error != EPERM)
    {
        return true;
    }
    // Asking the system where the path leads could fail as well, so its text has to do.
    std::error_code ignored;
    const std::filesystem::path full = std::filesystem::absolute(path, ignored);
    return IsPathUnder(root_, NormalizedCaseKey((full.empty() ? path : full).lexically_normal()));
}

} // namespace Vornu::Platform
