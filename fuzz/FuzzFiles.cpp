#include "fuzz/FuzzFiles.h"

#include "engine/core/Guid.h"
#include "engine/core/logging/Logger.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace Vornu::Fuzz
{
namespace
{

/// Savers flush what they write, which costs nothing in memory. TMPDIR goes before that.
std::filesystem::path TemporaryFolder()
{
    const std::filesystem::path memory = "/dev/shm";
    std::error_code error;
    return std::getenv("TMPDIR") == nullptr && std::filesystem::is_directory(memory, error)
               ? memory
               : std::filesystem::temp_directory_path();
}

/// Removed when the process ends as it should.
struct ScratchFolder
{
    ScratchFolder() : path(TemporaryFolder() / ("vornu-fuzz-" + Core::Guid::Generate().ToString()))
    {
        std::filesystem::create_directories(path);
        setenv("VORNU_USER_SETTINGS_DIR", (path / "user").c_str(), 1);
        Core::GetLogger().SetMinimumLevelForAll(Core::LogLevel::Off);
    }
    ~ScratchFolder()
    {
        std::error_code ignored; // the system clears its temporary folder
        std::filesystem::remove_all(path, ignored);
    }

    std::filesystem::path path;
};

} // namespace

std::filesystem::path ScratchFile(const std::string& name)
{
    static const ScratchFolder folder;
    return folder.path / name;
}

void WriteBytes(const std::filesystem::path& path, std::string_view bytes)
{
    std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string ReadBytes(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void Require(bool holds, const std::string& what)
{
    if (!holds)
    {
        std::fprintf(stderr, "%s\n", what.c_str());
        std::abort();
    }
}

} // namespace Vornu::Fuzz
