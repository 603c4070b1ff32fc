#pragma once

#include "engine/core/Guid.h"
#include "engine/reflection/PropertyTypes.h"
#include "engine/reflection/SchemaRecord.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
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
/// What begins the line of a field and of an array's element, by the type of the value.
inline constexpr std::array<std::string_view, 3> kFieldWords = {"property", "object_property",
                                                                "array_property"};
inline constexpr std::array<std::string_view, 3> kElementWords = {"value", "object", "array"};
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

    /// Takes `text` when the rest of the line begins with it; a short cut for whole tokens.
    bool TakeStart(std::string_view text) noexcept
    {
        const bool taken = Remaining().starts_with(text);
        at_ += taken ? text.size() : 0;
        return taken;
    }

    /// The next word up to white space; empty at the end of the line.
    std::string_view ReadWord() noexcept;

    /// The next quoted token. It is a view into the line unless it holds escapes, which are resolved in the
    /// arena.
    std::string_view ReadQuoted(SchemaArena& arena);

    /// Requires that nothing but white space follows.
    void RequireEnd() const
    {
        if (at_ != end_)
        {
            RequireBlanks();
        }
    }

    std::string_view Remaining() const noexcept { return {at_, static_cast<std::size_t>(end_ - at_)}; }

private:
    void RequireBlanks() const;
    std::string_view ReadEscaped(const char* begin, SchemaArena& arena);

    const char* begin_;
    const char* at_;
    const char* end_;
};

/// A decimal number of a record header: digits alone, up to 4,294,967,295.
std::uint32_t ParseSchemaCount(std::string_view word);

/// Room that `WriteEscaped` needs for a text of some size.
constexpr std::size_t EscapedCapacity(std::size_t size) noexcept
{
    return 2 * size + 8;
}

/// Writes `text` with the six escapes applied. Returns the end.
char* WriteEscaped(char* out, std::string_view text);
/// The size of what that writes.
std::size_t EscapedSize(std::string_view text);

/// How a value of some shape is stored.
SchemaValue::Type StoredType(ValueShape shape) noexcept;
/// The keyword and the name that the line of a field begins with.
std::string_view FieldLineHead(std::string_view name, ValueShape shape, SchemaArena& arena);

/// Room that `WriteLeaf` needs.
inline constexpr std::size_t kLeafCapacity = 128;

/// Writes a scalar leaf of kinds Bool to Quat or Guid, but String. No text of one needs an escape. Returns
/// the end.
char* WriteLeaf(char* out, PropertyKind kind, const ObjectView& view);
/// The 36 characters of a GUID; nothing for the null one.
char* WriteGuidLeaf(char* out, const Core::Guid& guid);
/// The text of a scalar leaf of kinds Bool to Quat or Guid, in the arena.
std::string_view FormatLeaf(PropertyKind kind, const ObjectView& view, SchemaArena& arena);
/// Parses such a text into the view's storage.
void ParseLeaf(PropertyKind kind, std::string_view text, const ObjectView& view);
/// The same for kind Float alone.
std::string_view FormatFloat(float value, SchemaArena& arena);
float ParseFloat(std::string_view text);

} // namespace Vornu::Reflection
