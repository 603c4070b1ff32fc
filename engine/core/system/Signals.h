#pragma once

#include <csignal>

namespace Vornu::Platform
{

/// For the start of a program: opens the standard descriptors that are closed on the null device, so that no
/// file of the program gets their numbers, and ignores SIGPIPE and SIGXFSZ, so that writing reports an error
/// instead of ending the program.
void PrepareStandardStreams() noexcept;

/// For the start of a program: what it prints leaves it line by line and in one piece a line, wherever the
/// output leads, so that a run that is ended has told what it had done.
void WriteStandardStreamsByLine() noexcept;

/// For the start of a program: SIGINT, SIGTERM and SIGHUP remove the registered temporary files before they
/// take their default course. A signal that is ignored when this is called stays ignored.
void InstallTemporaryFileCleanup() noexcept;

/// No slot: the path isn't registered.
inline constexpr int kNoTemporarySlot = -1;

/// Registers a file for removal by a fatal signal; best before it is created, so that none comes in between.
/// Gives the slot for `ReleaseTemporaryPath`, or
/// `kNoTemporarySlot` if all slots are taken or the path is too long for one. Safe from any thread.
int RegisterTemporaryPath(const char* path) noexcept;

/// Takes the path out of the register; does nothing for `kNoTemporarySlot`.
void ReleaseTemporaryPath(int slot) noexcept;

/// While one lives, the fatal signals of `InstallTemporaryFileCleanup` wait on this thread.
class FatalSignalsHeld
{
public:
    FatalSignalsHeld() noexcept;
    ~FatalSignalsHeld();
    FatalSignalsHeld(const FatalSignalsHeld&) = delete;
    FatalSignalsHeld& operator=(const FatalSignalsHeld&) = delete;

private:
    sigset_t before_;
};

} // namespace Vornu::Platform
