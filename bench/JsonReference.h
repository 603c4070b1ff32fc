#pragma once

#include <cstddef>
#include <filesystem>

namespace Vornu::Bench
{

/// The reference for a load and a save: parses a JSON scene into a DOM, converts every value to typed structs
/// and writes the DOM to another file. Gives the number of entities.
std::size_t RoundTripJson(const std::filesystem::path& source, const std::filesystem::path& target);

/// The reference for a load alone: the same without the writing, by a parser that works on many bytes at
/// once.
std::size_t LoadJson(const std::filesystem::path& source);

} // namespace Vornu::Bench
