#pragma once

#include "engine/core/Hash.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Vornu::Core
{

/// A 128-bit identity that is stable across files and processes. The null GUID has both words 0.
///
/// The sixteen bytes in reading order are `high` from its most significant byte down, then `low` likewise.
struct Guid
{
    std::uint64_t high = 0;
    std::uint64_t low = 0;

    /// Length of the text form: groups of 8, 4, 4, 4 and 12 digits.
    static constexpr std::size_t kTextLength = 36;

    /// A random GUID (RFC 4122, version 4). Safe from any thread.
    static Guid Generate();

    /// Lenient parser: drops every hyphen, wherever it stands, and then wants exactly 32 hexadecimal digits.
    static std::optional<Guid> TryParse(std::string_view text);

    bool IsValid() const noexcept { return (high | low) != 0; }

    /// 36 characters, lower case.
    std::string ToString() const;

    /// Writes the text form without a terminator to `out`, which holds `kTextLength` characters.
    void WriteText(char* out) const noexcept;

    std::uint64_t Hash() const noexcept;

    friend bool operator==(const Guid&, const Guid&) = default;
};

/// For containers. Another one in each process, so that no file can be made whose GUIDs fall together; what
/// can be seen must not depend on it.
struct GuidHash
{
    std::size_t operator()(const Guid& guid) const noexcept { return KeyedHash(guid.high, guid.low); }
};

/// A GUID derived from `bytes` alone, with version nibble 5: the same bytes give the same GUID in every run.
Guid GuidFromName(std::string_view bytes);

/// Strict parser of scene and schema text: empty text gives the null GUID; otherwise 32 hexadecimal digits,
/// or 36 characters with hyphens at 8, 13, 18 and 23. Throws `std::runtime_error` on anything else.
Guid ParseStableGuid(std::string_view text);

} // namespace Vornu::Core
