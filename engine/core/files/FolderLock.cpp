#include "engine/core/files/FolderLock.h"

#include <algorithm>
#include <cerrno>
#include <thread>

#include <sys/file.h>

namespace Vornu::Platform
{

FolderLock::FolderLock(const std::filesystem::path& folder, std::chrono::milliseconds patience)
{
    if (OpenFolder(folder, folder_) != 0 || !folder_.IsOpen())
    {
        return;
    }
    constexpr std::chrono::milliseconds kLongestPause{50};
    const auto deadline = std::chrono::steady_clock::now() + patience;
    // The system's own waiting has no time limit.
    for (std::chrono::milliseconds pause{1};; pause = std::min(2 * pause, kLongestPause))
    {
        if (::flock(folder_.Get(), LOCK_EX | LOCK_NB) == 0)
        {
            outcome_ = Outcome::Held;
            return;
        }
        if (errno != EWOULDBLOCK && errno != EINTR)
        {
            return;
        }
        if (std::chrono::steady_clock::now() >= deadline)
        {
            outcome_ = Outcome::TimedOut;
            return;
        }
        std::this_thread::sleep_for(pause);
    }
}

} // namespace Vornu::Platform
