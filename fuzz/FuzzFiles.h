#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace Vornu::Fuzz
{

/// A file in a scratch folder of the process.
std::filesystem::path ScratchFile(const std::string& name);

void WriteBytes(const std::filesystem::path& path, std::string_view bytes);
std::string ReadBytes(const std::filesystem::path& path);

inline std::string_view AsText(const std::uint8_t* data, std::size_t size)
{
    return {reinterpret_cast<const char*>(data), size};
}

/// Ends the process with a message when a property doesn't hold.
void Require(bool holds, const std::string& what);

} // namespace Vornu::Fuzz
