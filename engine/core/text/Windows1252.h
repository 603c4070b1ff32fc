#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Vornu::Core
{

// The single-byte encoding in which older tools wrote file names. The five bytes that it leaves unassigned
// stand for the code points of the same number, so every byte string has a reading.

/// The text in UTF-8.
std::string DecodeWindows1252(std::string_view bytes);

/// The bytes of a UTF-8 text; nothing if it isn't valid UTF-8 or holds a character that has no byte.
std::optional<std::string> EncodeWindows1252(std::string_view text);

} // namespace Vornu::Core
