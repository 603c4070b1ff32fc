#pragma once

#include "engine/core/Guid.h"
#include "engine/reflection/PropertyTypes.h"
#include "engine/reflection/SchemaRecord.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

/// Tokens and leaf values of schema text. Faults throw `std::runtime_error`.
namespace Vornu::Reflection
{

inline constexpr std::uint32_t kMaxNesting = 16;
inline constexpr std::uint32_t kMaxFields = 1024;   // of one object
inline constexpr std::uint32_t kMaxElements = 1024; // of one array
inline constexpr std::uint32_t kMaxFieldSum = 4096; // fields and elements of a whole record
inline constexpr std::size_t kMaxLineSize = 65535;
inline constexpr std::size_t kMaxRecordSize = 0x100000; // all lines, each with one byte for its end
inline constexpr std::string_view kRecordWord = "component_schema";
inline constexpr char kTruncatedRecord[] = "Truncated or oversized component schema record.";

/// Running account of the fields and elements that one record declares, at every depth.
class FieldBudget
{
public:
    /// Opens an object or array of `count` items at a depth, the record itself being depth 1.
    void Charge(std::uint64_t count, std::uint32_t depth);

private:
    std::uint64_t fields_ = 0;
};

/// Running account of one record in text.
struct SchemaBudget : FieldBudget
{
    std::uint64_t bytes = 0;
};

/// Reads the tokens of one line by the strict rules.
class SchemaLine
{
public:
    explicit SchemaLine(std::string_view line) noexcept
        : begin_(line.data()), at_(begin_), end_(begin_ + line.size())
    {
    }

    /// Takes a word with the blank behind it when the line begins with them; a short cut for `ReadWord`.
    template<std::size_t Size>
    bool TakeFirstWord(const char (&wordAndBlank)[Size]) noexcept
    {
        constexpr std::size_t kLength = Size - 1;
        const bool taken =
            static_cast<std::size_t>(end_ - at_) >= kLength && std::memcmp(at_, wordAndBlank, kLength) == 0;
        at_ += taken ? kLength : 0;
        return taken;
    }

    /// The next word up to white space; empty at the end of the line.
    std::string_view ReadWord() noexcept;

    /// The next quoted token. It is a view into the line unless it holds escapes, which are resolved in the
    /// arena.
    std::string_view ReadQuoted(SchemaArena& arena);

    /// Requires that nothing but white space follows.
    void RequireEnd() const;

    std::string_view Remaining() const noexcept { return {at_, static_cast<std::size_t>(end_ - at_)}; }

private:
    std::string_view ReadEscaped(const char* begin, SchemaArena& arena);

    const char* begin_;
    const char* at_;
    const char* end_;
};

/// A decimal number of a record header: digits alone, up to 4,294,967,295.
std::uint32_t ParseSchemaCount(std::string_view word);

/// Charges one line of a record, or the rest of its header line.
void ChargeRecordLine(std::string_view line, SchemaBudget& budget);

/// Writes `text` with the six escapes applied; needs room for twice its size. Returns the end.
char* WriteEscaped(char* out, std::string_view text);

/// The text of a scalar leaf of kinds Bool to Quat or Guid, in the arena.
std::string_view FormatLeaf(PropertyKind kind, const ObjectView& view, SchemaArena& arena);
/// Parses such a text into the view's storage.
void ParseLeaf(PropertyKind kind, std::string_view text, const ObjectView& view);
/// The 36 characters of a GUID; empty for the null one.
std::string_view FormatGuid(const Core::Guid& guid, SchemaArena& arena);

} // namespace Vornu::Reflection
