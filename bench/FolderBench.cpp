#include "engine/assets/registry/AssetRegistry.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Vornu::Bench
{
namespace
{

namespace fs = std::filesystem;

/// Writes a content folder of small assets, three folders deep, like a project that grew for some years.
void MakeContent(const fs::path& root, std::size_t files)
{
    constexpr std::size_t kFilesPerFolder = 25;
    constexpr std::size_t kFoldersPerFolder = 20;
    constexpr std::array<std::string_view, 5> kExtensions = {".png", ".vmat", ".fbx", ".vmesh", ".wav"};
    fs::path folder;
    for (std::size_t i = 0; i < files; ++i)
    {
        if (i % kFilesPerFolder == 0)
        {
            const std::size_t number = i / kFilesPerFolder;
            folder = root / ("Zone" + std::to_string(number / (kFoldersPerFolder * kFoldersPerFolder))) /
                     ("Area" + std::to_string(number / kFoldersPerFolder % kFoldersPerFolder)) /
                     ("Props" + std::to_string(number % kFoldersPerFolder));
            fs::create_directories(folder);
        }
        std::ofstream file(folder / ("Asset_" + std::to_string(i) + std::string(kExtensions[i % 5])));
        file << "asset " << i << '\n';
        if (!file.flush())
        {
            throw std::runtime_error("can't write an asset");
        }
    }
}

DIR* OpenFolder(const std::string& path)
{
    DIR* const folder = ::opendir(path.c_str());
    if (folder == nullptr)
    {
        throw std::runtime_error("can't open a folder");
    }
    return folder;
}

std::size_t ReadWholeFile(const char* path)
{
    const int descriptor = ::open(path, O_RDONLY | O_CLOEXEC);
    std::array<char, 4096> buffer;
    std::size_t size = 0;
    ssize_t count = 0;
    while (descriptor >= 0 && (count = ::read(descriptor, buffer.data(), buffer.size())) > 0)
    {
        size += static_cast<std::size_t>(count);
    }
    ::close(descriptor);
    return size;
}

/// Counts the files below a folder for which `visit(path, name)` gives true.
template<class Visit>
std::size_t CountFiles(std::string& path, Visit visit)
{
    DIR* const folder = OpenFolder(path);
    const std::size_t length = path.size();
    std::size_t count = 0;
    while (const dirent* const entry = ::readdir(folder))
    {
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..")
        {
            continue;
        }
        path.append("/").append(name);
        if (entry->d_type == DT_DIR)
        {
            count += CountFiles(path, visit);
        }
        else
        {
            count += visit(path.c_str(), name) ? 1 : 0;
        }
        path.resize(length);
    }
    ::closedir(folder);
    return count;
}

/// The least that it takes to look at the head of a file.
bool Peek(const char* path, std::string_view)
{
    std::array<char, 4096> buffer;
    const int descriptor = ::open(path, O_RDONLY | O_CLOEXEC);
    const bool isRead = ::read(descriptor, buffer.data(), buffer.size()) > 0;
    ::close(descriptor);
    return isRead;
}

/// The least that a mount has to ask of the system about a file: size and time, and the bytes of a sidecar.
/// Counts the other files.
bool Examine(const char* path, std::string_view name)
{
    struct stat status = {};
    if (::stat(path, &status) != 0)
    {
        throw std::runtime_error("can't examine a file");
    }
    if (!name.ends_with(".vmeta"))
    {
        return true;
    }
    if (ReadWholeFile(path) != static_cast<std::size_t>(status.st_size))
    {
        throw std::runtime_error("can't read a sidecar");
    }
    return false;
}

std::chrono::nanoseconds TimeOf(std::string_view step, std::string folder, std::size_t files)
{
    Assets::AssetRegistry registry;
    std::size_t found = 0;
    const auto start = std::chrono::steady_clock::now();
    if (step == "mount")
    {
        registry.Mount(folder, Assets::AssetMountMode::Authoring);
    }
    else
    {
        found = CountFiles(folder, step == "walk" ? &Examine : &Peek);
    }
    const std::chrono::nanoseconds taken = std::chrono::steady_clock::now() - start;
    if (step == "mount")
    {
        found = registry.ListRecords().size();
    }
    if (found != files)
    {
        throw std::runtime_error("files are missing");
    }
    return taken;
}

} // namespace
} // namespace Vornu::Bench

/// Makes a content folder, or does one step with it and prints the nanoseconds that it took. Every mount is
/// the first one of a process, as it is for the program.
int main(int argc, char** argv)
{
    if (argc != 4)
    {
        std::fprintf(stderr, "Usage: folder_bench make|mount|walk|peek <folder> <files>\n");
        return 2;
    }
    const std::string_view step = argv[1];
    const std::size_t files = std::strtoull(argv[3], nullptr, 10);
    if (step == "make")
    {
        Vornu::Bench::MakeContent(argv[2], files);
        return 0;
    }
    std::printf("%lld\n", static_cast<long long>(Vornu::Bench::TimeOf(step, argv[2], files).count()));
    return 0;
}
