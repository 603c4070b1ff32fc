#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Runs a fuzz target over every file of a folder, and over every beginning of it up to a limit.
int main(int argc, char** argv)
{
    constexpr std::size_t kMaxCuts = 400;
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(argc > 1 ? argv[1] : "."))
    {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string text{std::istreambuf_iterator<char>(file), {}};
        const std::size_t step = text.size() / kMaxCuts + 1;
        for (std::size_t size = text.size() % step; size <= text.size(); size += step)
        {
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(text.data()), size);
        }
        ++files;
    }
    std::printf("%zu seeds replayed\n", files);
    return files > 0 ? 0 : 1;
}
