#include "engine/core/system/Signals.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace Vornu::Platform
{
namespace
{

constexpr std::size_t kSlotCount = 64;
constexpr int kFatalSignals[] = {SIGINT, SIGTERM, SIGHUP};

enum class SlotState : int
{
    Free,
    Filling,
    Registered,
    /// Taken by the signal handler and never used again.
    Removing,
};

struct TemporarySlot
{
    std::atomic<SlotState> state = SlotState::Free;
    char path[PATH_MAX] = {};
};

static_assert(std::atomic<SlotState>::is_always_lock_free, "the signal handler must not wait for a lock");

std::array<TemporarySlot, kSlotCount> slots;

sigset_t FatalSignals() noexcept
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signalNumber : kFatalSignals)
    {
        sigaddset(&signals, signalNumber);
    }
    return signals;
}

void RemoveTemporaryFiles(int signalNumber)
{
    for (TemporarySlot& slot : slots)
    {
        SlotState expected = SlotState::Registered;
        if (slot.state.compare_exchange_strong(expected, SlotState::Removing))
        {
            ::unlink(slot.path);
        }
    }
    // The handler was installed for one delivery, so this one meets the default action once it returns.
    ::raise(signalNumber);
}

} // namespace

void PrepareStandardStreams() noexcept
{
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor)
    {
        if (::fcntl(descriptor, F_GETFD) == -1 && errno == EBADF)
        {
            // Gets the lowest free number, which is the one looked at.
            [[maybe_unused]] const int opened = ::open("/dev/null", O_RDWR);
        }
    }
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

void WriteStandardStreamsByLine() noexcept
{
    constexpr std::size_t kLineBuffer = 8192;
    static char buffers[2][kLineBuffer];
    std::setvbuf(stdout, buffers[0], _IOLBF, kLineBuffer);
    std::setvbuf(stderr, buffers[1], _IOLBF, kLineBuffer);
}

void InstallTemporaryFileCleanup() noexcept
{
    struct sigaction action = {};
    action.sa_handler = RemoveTemporaryFiles;
    action.sa_flags = static_cast<int>(SA_RESETHAND);
    action.sa_mask = FatalSignals();
    for (const int signalNumber : kFatalSignals)
    {
        struct sigaction current = {};
        if (::sigaction(signalNumber, nullptr, &current) == 0 && current.sa_handler != SIG_IGN)
        {
            ::sigaction(signalNumber, &action, nullptr);
        }
    }
}

int RegisterTemporaryPath(const char* path) noexcept
{
    const std::size_t length = std::strlen(path);
    if (length >= PATH_MAX)
    {
        return kNoTemporarySlot;
    }
    for (std::size_t i = 0; i < slots.size(); ++i)
    {
        SlotState expected = SlotState::Free;
        if (slots[i].state.compare_exchange_strong(expected, SlotState::Filling))
        {
            std::memcpy(slots[i].path, path, length + 1);
            slots[i].state.store(SlotState::Registered);
            return static_cast<int>(i);
        }
    }
    return kNoTemporarySlot;
}

void ReleaseTemporaryPath(int slot) noexcept
{
    if (slot != kNoTemporarySlot)
    {
        SlotState expected = SlotState::Registered;
        slots[static_cast<std::size_t>(slot)].state.compare_exchange_strong(expected, SlotState::Free);
    }
}

FatalSignalsHeld::FatalSignalsHeld() noexcept
{
    const sigset_t signals = FatalSignals();
    ::pthread_sigmask(SIG_BLOCK, &signals, &before_);
}

FatalSignalsHeld::~FatalSignalsHeld()
{
    ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

} // namespace Vornu::Platform
