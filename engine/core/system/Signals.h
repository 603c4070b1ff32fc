#pragma once

namespace Vornu::Platform
{

/// For the start of a program: opens the standard descriptors that are closed on the null device, so that no
/// file of the program gets their numbers, and ignores SIGPIPE and SIGXFSZ, so that writing reports an error
/// instead of ending the program.
void PrepareStandardStreams() noexcept;

/// For the start of a program: SIGINT, SIGTERM and SIGHUP remove the registered temporary files before they
/// take their default course. A signal that is ignored when this is called stays ignored.
void InstallTemporaryFileCleanup() noexcept;

/// No slot: the path isn't registered.
inline constexpr int kNoTemporarySlot = -1;

/// Registers a file for removal by a fatal signal. Gives the slot for `ReleaseTemporaryPath`, or
/// `kNoTemporarySlot` if all slots are taken or the path is too long for one. Safe from any thread.
int RegisterTemporaryPath(const char* path) noexcept;

/// Takes the path out of the register; does nothing for `kNoTemporarySlot`.
void ReleaseTemporaryPath(int slot) noexcept;

} // namespace Vornu::Platform
