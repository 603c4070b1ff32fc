#include "engine/assets/cooked/CookedContainer.h"
#include "engine/assets/identity/ContentHash.h"
#include "fuzz/FuzzFiles.h"

#include <algorithm>
#include <cstring>
#include <span>

namespace
{

using namespace Vornu;

constexpr std::size_t kReservedStart = 32; // eight bytes that no reader looks at
constexpr std::size_t kChecksumStart = 24;

/// Two files with the same bytes, but for the reserved ones.
bool AreAlike(std::vector<std::byte> one, std::span<const std::byte> other)
{
    std::copy_n(other.begin() + kReservedStart, 8, one.begin() + kReservedStart);
    return std::ranges::equal(one, other);
}

/// A file that opens is what is written for its kind, version and payload.
void CheckFile(std::span<const std::byte> file)
{
    const auto header = Assets::ReadContainerHeader(file);
    if (!header)
    {
        return;
    }
    std::string error;
    const auto payload = Assets::OpenContainer(file, header->kind, header->formatVersion, "file", &error);
    Fuzz::Require(payload.has_value() == error.empty(), "an opened file and its error disagree: " + error);
    if (payload)
    {
        Fuzz::Require(AreAlike(Assets::WrapContainer(header->kind, header->formatVersion, *payload), file),
                      "a container is written differently");
    }
    Fuzz::Require(!Assets::OpenContainer(file, ~header->kind, header->formatVersion, "file", nullptr) &&
                      !Assets::OpenContainer(file, header->kind, ~header->formatVersion, "file", nullptr),
                  "a file opens as what it isn't");
}

} // namespace

/// The input is a file, read as it stands and once more with the checksum that fits.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto input = std::as_bytes(std::span(data, size));
    CheckFile(input);
    if (size >= Assets::kContainerHeaderSize)
    {
        std::vector<std::byte> fitting(input.begin(), input.end());
        const std::uint64_t checksum = Assets::Xxh64(input.subspan(Assets::kContainerHeaderSize));
        std::memcpy(fitting.data() + kChecksumStart, &checksum, sizeof checksum);
        CheckFile(fitting);
    }
    return 0;
}
