#pragma once

#include <mutex>

namespace Vornu::Assets::Detail
{

/// A recursive mutex that its holder can give up for a while, however often it holds it.
class LoaderMutex
{
public:
    void lock()
    {
        mutex_.lock();
        ++depth_;
    }

    void unlock()
    {
        --depth_;
        mutex_.unlock();
    }

    /// Leaves the mutex, which the calling thread holds, to others for the length of a scope.
    class Gap
    {
    public:
        explicit Gap(LoaderMutex& mutex) : mutex_(mutex), depth_(mutex.depth_)
        {
            for (unsigned i = 0; i < depth_; ++i)
            {
                mutex_.unlock();
            }
        }
        Gap(const Gap&) = delete;
        Gap& operator=(const Gap&) = delete;
        ~Gap()
        {
            for (unsigned i = 0; i < depth_; ++i)
            {
                mutex_.lock();
            }
        }

    private:
        LoaderMutex& mutex_;
        const unsigned depth_;
    };

private:
    std::recursive_mutex mutex_;
    unsigned depth_ = 0; // of the thread that holds the mutex
};

} // namespace Vornu::Assets::Detail
