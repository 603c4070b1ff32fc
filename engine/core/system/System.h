#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

namespace Vornu::Platform
{

/// The value of an environment variable in native bytes. A variable that is empty counts as not set. Not to
/// be called while another thread changes the environment.
std::optional<std::string> GetEnvironmentValue(std::string_view name);

/// Full path of the running program.
std::optional<std::filesystem::path> ExecutablePath();

/// Names the calling thread for debuggers. The system keeps 15 bytes; a longer name is cut in front of the
/// UTF-8 character that doesn't fit.
void SetCurrentThreadName(std::string_view name) noexcept;

/// Fills `buffer` from the system's random generator. False if the system has none to give.
bool RandomBytes(void* buffer, std::size_t length) noexcept;

/// Makes the allocator keep what is freed for later instead of giving it back to the system each time. For
/// programs that load one file after the other and end; the peak of their memory stays as it is.
void KeepFreedMemory() noexcept;

/// The system's text for an error number, in English whatever the locale. Safe from any thread.
std::string SystemErrorText(int errorNumber);
std::string SystemErrorText(const std::error_code& error);

// The standard library's file operations with errors of one form: each throws a
// `std::filesystem::filesystem_error` whose text starts with the operation's name, as in
// `exists: Permission denied: "Content/a"`.

/// Throws as "create_directories".
bool CreateDirectories(const std::filesystem::path& path);

/// Creates one folder that is closed to others. One that is there already is an error. Throws as
/// "create_directories".
void CreatePrivateDirectory(const std::filesystem::path& path);

/// Absence is no error. Throws as "exists".
bool Exists(const std::filesystem::path& path);

/// Absence is no error. Throws as "status".
std::filesystem::file_status Status(const std::filesystem::path& path);

/// Absence is no error. Throws as "directory_entry::status".
std::filesystem::file_status EntryStatus(const std::filesystem::path& entry);

/// Throws as "weakly_canonical".
std::filesystem::path WeaklyCanonical(const std::filesystem::path& path);

/// Throws as "temp_directory_path".
std::filesystem::path TempDirectoryPath();

/// Throws as "copy_file".
bool CopyFile(const std::filesystem::path& from, const std::filesystem::path& to,
              std::filesystem::copy_options options = std::filesystem::copy_options::none);

/// Throws as "last_write_time".
std::filesystem::file_time_type LastWriteTime(const std::filesystem::path& path);

} // namespace Vornu::Platform
