#include "engine/core/ReadFaults.h"

#include "engine/core/Paths.h"
#include "engine/core/System.h"

#include <cerrno>
#include <deque>
#include <exception>
#include <mutex>

namespace Vornu::Platform
{
namespace
{

struct ReadFault
{
    std::string path;
    int error = 0;
};

constexpr std::size_t kMostKept = 256;

std::mutex mutex;
std::deque<ReadFault> kept; // the latest
std::size_t count = 0;      // of all

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
    const std::lock_guard lock(mutex);
    ++count;
    try
    {
        kept.push_back({path.native(), error});
        if (kept.size() > kMostKept)
        {
            kept.pop_front();
        }
    }
    catch (const std::exception&) // without memory the count alone tells
    {
    }
    errno = formerError;
}

ReadFaultWatch::ReadFaultWatch()
{
    const std::lock_guard lock(mutex);
    begin_ = count;
}

std::string ReadFaultWatch::First(const std::filesystem::path& folder) const
{
    const std::string root = NormalizedCaseKey(folder);
    const std::lock_guard lock(mutex);
    std::size_t seen = count - begin_;
    if (seen > kept.size())
    {
        return folder.native() + ": " + SystemErrorText(EIO); // what it was is forgotten
    }
    for (auto fault = kept.end() - static_cast<std::ptrdiff_t>(seen); fault != kept.end(); ++fault)
    {
        const bool isForeign = !IsPathUnder(root, NormalizedCaseKey(fault->path));
        if (!isForeign || (fault->error != EACCES && fault->error != EPERM))
        {
            return fault->path + ": " + SystemErrorText(fault->error);
        }
    }
    return {};
}

} // namespace Vornu::Platform
