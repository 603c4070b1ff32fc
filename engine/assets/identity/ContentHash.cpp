#include "engine/assets/identity/ContentHash.h"

#include "engine/core/files/InputFile.h"

#include <charconv>
#include <memory>

// Without its library, which would have to be found and loaded at every start.
#define XXH_INLINE_ALL
#include <xxhash.h>

namespace Vornu::Assets
{
namespace
{

constexpr std::size_t kBlockSize = 262'144;

void Report(std::string* error, const char* what, const std::filesystem::path& path)
{
    if (error != nullptr)
    {
        *error = what + path.native();
    }
}

} // namespace

std::uint64_t Xxh64(std::span<const std::byte> bytes) noexcept
{
    return XXH64(bytes.data(), bytes.size(), 0);
}

std::optional<std::uint64_t> HashFile(const std::filesystem::path& path, std::string* error)
{
    Core::InputFile file(path);
    if (!file.IsOpen())
    {
        Report(error, "Failed to open file for hashing: ", path);
        return std::nullopt;
    }
    const auto block = std::make_unique_for_overwrite<char[]>(kBlockSize);
    const std::unique_ptr<XXH64_state_t, decltype(&XXH64_freeState)> state(XXH64_createState(),
                                                                           &XXH64_freeState);
    XXH64_reset(state.get(), 0);
    std::size_t count = 0;
    do
    {
        count = file.Read(block.get(), kBlockSize);
        XXH64_update(state.get(), block.get(), count);
    } while (count == kBlockSize);
    if (file.Failed())
    {
        Report(error, "Failed to read file for hashing: ", path);
        return std::nullopt;
    }
    return XXH64_digest(state.get());
}

std::string HashText(std::uint64_t hash)
{
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text(16, '0');
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        text[i] = kDigits[(hash >> (60 - 4 * i)) & 0xF];
    }
    return text;
}

std::optional<std::uint64_t> ParseHashText(std::string_view text) noexcept
{
    std::uint64_t hash = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, hash, 16);
    if (text.size() > 16 || error != std::errc() || rest != end)
    {
        return std::nullopt;
    }
    return hash;
}

} // namespace Vornu::Assets
