#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace
{

/// Runs the target over every file below a folder, and over every beginning of it up to a limit. Gives the
/// number of files.
std::size_t ReplayFolder(const std::filesystem::path& folder)
{
    constexpr std::size_t kMaxCuts = 200;
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
    {
        if (!entry.is_regular_file())
        {
            continue;
        }
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        const std::size_t step = text.size() / kMaxCuts + 1;
        for (std::size_t size = text.size() % step; size <= text.size(); size += step)
        {
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(text.data()), size);
        }
        ++files;
    }
    return files;
}

} // namespace

int main(int argc, char** argv)
{
    std::size_t files = 0;
    for (int i = 1; i < argc; ++i)
    {
        files += ReplayFolder(argv[i]);
    }
    std::printf("%zu seeds replayed\n", files);
    return files > 0 ? 0 : 1;
}
