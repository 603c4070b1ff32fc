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
#include <sys/resource.h>
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

DIR* OpenFolder(int parent, const char* name)
{
    const int descriptor = ::openat(parent, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR* const folder = descriptor < 0 ? nullptr : ::fdopendir(descriptor);
    if (folder == nullptr)
    {
        throw std::runtime_error("can't open a folder");
    }
    return folder;
}

/// Counts the files below an open folder, which it closes, for which `visit(folder, name)` gives true.
template<class Visit>
std::size_t CountFiles(DIR* folder, Visit visit)
{
    const int descriptor = ::dirfd(folder);
    std::size_t count = 0;
    while (const dirent* const entry = ::readdir(folder))
    {
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..")
        {
            continue;
        }
        if (entry->d_type == DT_DIR)
        {
            count += CountFiles(OpenFolder(descriptor, entry->d_name), visit);
        }
        else
        {
            count += visit(descriptor, entry->d_name) ? 1 : 0;
        }
    }
    ::closedir(folder);
    return count;
}

/// The least that it takes to look at the head of a file.
bool Peek(int folder, const char* name)
{
    std::array<char, 4096> buffer;
    const int descriptor = ::openat(folder, name, O_RDONLY | O_CLOEXEC);
    const bool isRead = ::read(descriptor, buffer.data(), buffer.size()) > 0;
    ::close(descriptor);
    return isRead;
}

/// The least that a mount has to ask of the system about a file: the time and size of an asset, and the bytes
/// of a sidecar. Counts the assets.
bool Examine(int folder, const char* name)
{
    struct stat status = {};
    if (!std::string_view(name).ends_with(".vmeta"))
    {
        if (::fstatat(folder, name, &status, 0) != 0)
        {
            throw std::runtime_error("can't examine a file");
        }
        return true;
    }
    std::array<char, 4096> buffer;
    const int descriptor = ::openat(folder, name, O_RDONLY | O_CLOEXEC);
    if (::fstat(descriptor, &status) != 0 ||
        ::read(descriptor, buffer.data(), buffer.size()) != status.st_size)
    {
        throw std::runtime_error("can't read a sidecar");
    }
    ::close(descriptor);
    return false;
}

/// The most memory that the process has had so far, in bytes.
long long PeakMemory()
{
    struct rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss * 1024LL;
}

struct Figures
{
    long long nanoseconds = 0;
    long long memory = 0; // by which the peak rose
};

Figures Measure(std::string_view step, const std::string& folder, std::size_t files)
{
    Assets::AssetRegistry registry;
    std::size_t found = 0;
    const long long memory = PeakMemory();
    const auto start = std::chrono::steady_clock::now();
    if (step == "mount")
    {
        registry.Mount(folder, Assets::AssetMountMode::Authoring);
    }
    else
    {
        found = CountFiles(OpenFolder(AT_FDCWD, folder.c_str()), step == "walk" ? &Examine : &Peek);
    }
    const std::chrono::nanoseconds taken = std::chrono::steady_clock::now() - start;
    const Figures figures{taken.count(), PeakMemory() - memory};
    if (step == "mount")
    {
        found = registry.ListRecords().size(); // takes memory of its own
    }
    if (found != files)
    {
        throw std::runtime_error("files are missing");
    }
    return figures;
}

} // namespace
} // namespace Vornu::Bench

/// Makes a content folder, or does one step with it and prints the nanoseconds that it took and the bytes by
/// which the peak of memory rose. Every mount is the first one of a process, as it is for the program.
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
    const Vornu::Bench::Figures figures = Vornu::Bench::Measure(step, argv[2], files);
    std::printf("%lld %lld\n", figures.nanoseconds, figures.memory);
    return 0;
}
