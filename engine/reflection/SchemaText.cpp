#include "engine/reflection/SchemaText.h"

#include "engine/core/text/ByteScan.h"
#include "engine/core/text/NumberText.h"
#include "engine/core/text/TokenReader.h"

#include <glm/gtc/quaternion.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <string>

namespace Vornu::Reflection
{
namespace
{

using Core::IsSpace;

constexpr char kNumberFault[] = "Invalid or out-of-range numeric value.";
constexpr char kTrailingFault[] = "Unexpected trailing schema data.";
constexpr char kControlFault[] = "Unescaped control character in schema token.";

/// Characters that end the plain run of a quoted token.
constexpr auto kTokenStops = []
{
    std::array<bool, 256> table{};
    for (const char c : {'"', '\\', '\0', '\n', '\r'})
    {
        table[static_cast<unsigned char>(c)] = true;
    }
    return table;
}();

/// The letter behind the backslash for the bytes that are written escaped; 0 for all others.
constexpr auto kEscapes = []
{
    std::array<char, 256> table{};
    table['\0'] = '0';
    table['\t'] = 't';
    table['\n'] = 'n';
    table['\r'] = 'r';
    table['"'] = '"';
    table['\\'] = '\\';
    return table;
}();

bool StopsToken(char c)
{
    return kTokenStops[static_cast<unsigned char>(c)];
}

char Unescape(char c)
{
    switch (c)
    {
    case '"':
    case '\\':
        return c;
    case 'n':
        return '\n';
    case 'r':
        return '\r';
    case 't':
        return '\t';
    case '0':
        return '\0';
    default:
        throw std::runtime_error("Unknown schema escape.");
    }
}

template<class Value>
Value& Storage(const ObjectView& view)
{
    if (view.type != TypeIdOf<Value>() || view.mutableData == nullptr)
    {
        throw std::runtime_error("Schema accessor rejected value storage.");
    }
    return *static_cast<Value*>(view.mutableData);
}

template<class Value>
const Value& ConstStorage(const ObjectView& view)
{
    if (view.type != TypeIdOf<Value>() || view.constData == nullptr)
    {
        throw std::runtime_error("Schema accessor rejected value storage.");
    }
    return *static_cast<const Value*>(view.constData);
}

template<class Integer>
Integer ParseInteger(std::string_view text)
{
    const std::optional<Integer> value = Core::ParseIntegerText<Integer>(text);
    if (!value)
    {
        throw std::runtime_error(kNumberFault);
    }
    return *value;
}

bool ParseBool(std::string_view text)
{
    if (text != "0" && text != "1")
    {
        throw std::runtime_error("Boolean schema value must be 0 or 1.");
    }
    return text == "1";
}

/// Reads exactly `components.size()` words.
void ParseComponents(std::string_view text, std::initializer_list<float*> components)
{
    SchemaLine words(text);
    for (float* const component : components)
    {
        const std::string_view word = words.ReadWord();
        if (word.empty())
        {
            throw std::runtime_error("Missing vector component.");
        }
        *component = ParseFloat(word);
    }
    words.RequireEnd();
}

char* WriteFloat(char* out, float value)
{
    if (!std::isfinite(value))
    {
        throw std::runtime_error("Cannot save a non-finite schema value.");
    }
    return Core::WriteFloatText(out, value);
}

char* WriteComponents(char* out, std::initializer_list<float> components)
{
    bool first = true;
    for (const float component : components)
    {
        if (!first)
        {
            *out++ = ' ';
        }
        first = false;
        out = WriteFloat(out, component);
    }
    return out;
}

} // namespace

void FieldBudget::Charge(std::uint64_t count, std::uint32_t depth)
{
    if (depth > kMaxNesting || count > kMaxFields || fields_ + count > kMaxFieldSum)
    {
        throw std::runtime_error("Schema exceeds the nesting or field budget.");
    }
    fields_ += count;
}

std::string_view SchemaLine::ReadWord() noexcept
{
    while (at_ != end_ && IsSpace(*at_))
    {
        ++at_;
    }
    const char* const begin = at_;
    while (at_ != end_ && !IsSpace(*at_))
    {
        ++at_;
    }
    return {begin, static_cast<std::size_t>(at_ - begin)};
}

std::string_view SchemaLine::ReadQuoted(SchemaArena& arena)
{
    while (at_ != end_ && IsSpace(*at_))
    {
        ++at_;
    }
    if (at_ == end_ || *at_ != '"')
    {
        throw std::runtime_error("Malformed quoted schema token.");
    }
    const char* const begin = ++at_;
    at_ = Core::SkipPlainBytes(begin_, at_, end_);
    while (at_ != end_ && !StopsToken(*at_))
    {
        at_ = Core::SkipPlainBytes(begin_, at_ + 1, end_);
    }
    if (at_ == end_)
    {
        throw std::runtime_error("Unterminated schema token.");
    }
    if (*at_ == '"')
    {
        return {begin, static_cast<std::size_t>(at_++ - begin)};
    }
    return ReadEscaped(begin, arena);
}

/// Goes on with a token that began at `begin` and whose first special character is at hand.
std::string_view SchemaLine::ReadEscaped(const char* begin, SchemaArena& arena)
{
    std::string text(begin, at_);
    for (; at_ != end_; ++at_)
    {
        if (*at_ == '"')
        {
            ++at_;
            return arena.CopyText(text);
        }
        if (*at_ == '\\')
        {
            if (++at_ == end_)
            {
                throw std::runtime_error("Incomplete schema escape.");
            }
            text.push_back(Unescape(*at_));
        }
        else if (StopsToken(*at_))
        {
            throw std::runtime_error(kControlFault);
        }
        else
        {
            text.push_back(*at_);
        }
    }
    throw std::runtime_error("Unterminated schema token.");
}

void SchemaLine::RequireBlanks() const
{
    for (const char* at = at_; at != end_; ++at)
    {
        if (!IsSpace(*at))
        {
            throw std::runtime_error(kTrailingFault);
        }
    }
}

std::uint32_t ParseSchemaCount(std::string_view word)
{
    return ParseInteger<std::uint32_t>(word);
}

namespace
{

/// Copies a text and tells whether it holds plain bytes alone.
bool CopyPlain(char* out, std::string_view text)
{
    constexpr std::size_t kHalf = sizeof(std::uint64_t);
    const char* const at = text.data();
    const std::size_t size = text.size();
    if (size >= Core::kScanWidth)
    {
        // The last step takes what the others have left with some of what they have taken.
        const std::size_t last = size - Core::kScanWidth;
        std::uint32_t special = Core::SpecialBytes(at + last);
        std::memcpy(out + last, at + last, Core::kScanWidth);
        for (std::size_t i = 0; i < last; i += Core::kScanWidth)
        {
            special |= Core::SpecialBytes(at + i);
            std::memcpy(out + i, at + i, Core::kScanWidth);
        }
        return special == 0;
    }
    if (size >= kHalf)
    {
        const std::uint64_t front = Core::LoadBytes(at);
        const std::uint64_t back = Core::LoadBytes(at + size - kHalf);
        std::memcpy(out, &front, kHalf);
        std::memcpy(out + size - kHalf, &back, kHalf);
        return Core::PlainBytes(front) == kHalf && Core::PlainBytes(back) == kHalf;
    }
    const std::uint64_t bytes = size > 0 ? Core::LoadFewBytes(at, size) : 0;
    std::memcpy(out, &bytes, kHalf);
    return size == 0 || Core::PlainBytes(bytes) >= size;
}

} // namespace

char* WriteEscaped(char* out, std::string_view text)
{
    if (CopyPlain(out, text))
    {
        return out + text.size();
    }
    for (const char c : text)
    {
        const char escape = kEscapes[static_cast<unsigned char>(c)];
        if (escape != 0)
        {
            *out++ = '\\';
        }
        *out++ = escape != 0 ? escape : c;
    }
    return out;
}

std::size_t EscapedSize(std::string_view text)
{
    std::size_t size = text.size();
    const char* const end = text.data() + text.size();
    const char* at = Core::SkipPlainBytes(text.data(), text.data(), end);
    while (at != end)
    {
        size += kEscapes[static_cast<unsigned char>(*at)] != 0 ? 1 : 0;
        at = Core::SkipPlainBytes(text.data(), at + 1, end);
    }
    return size;
}

float ParseFloat(std::string_view text)
{
    const std::optional<float> value = Core::ParseFloatText(text);
    if (!value)
    {
        throw std::runtime_error(kNumberFault);
    }
    if (!std::isfinite(*value))
    {
        throw std::runtime_error("Non-finite numeric value.");
    }
    return *value;
}

SchemaValue::Type StoredType(ValueShape shape) noexcept
{
    switch (shape)
    {
    case ValueShape::Object:
        return SchemaValue::Type::Record;
    case ValueShape::Collection:
        return SchemaValue::Type::Array;
    case ValueShape::Scalar:
        break;
    }
    return SchemaValue::Type::Text;
}

std::string_view FieldLineHead(std::string_view name, ValueShape shape, SchemaArena& arena)
{
    const std::string_view word = kFieldWords[static_cast<std::size_t>(StoredType(shape))];
    char* const head = arena.AllocateText(word.size() + EscapedCapacity(name.size()) + 3);
    char* at = std::copy(word.begin(), word.end(), head);
    *at++ = ' ';
    *at++ = '"';
    at = WriteEscaped(at, name);
    *at++ = '"';
    arena.ShrinkText(at);
    return {head, static_cast<std::size_t>(at - head)};
}

std::string_view FormatFloat(float value, SchemaArena& arena)
{
    char* const begin = arena.AllocateText(Core::kNumberTextCapacity);
    char* const end = WriteFloat(begin, value);
    arena.ShrinkText(end);
    return {begin, static_cast<std::size_t>(end - begin)};
}

char* WriteLeaf(char* out, PropertyKind kind, const ObjectView& view)
{
    switch (kind)
    {
    case PropertyKind::Bool:
        *out = ConstStorage<bool>(view) ? '1' : '0';
        return out + 1;
    case PropertyKind::Int32:
        return Core::WriteIntegerText(out, ConstStorage<std::int32_t>(view));
    case PropertyKind::UInt32:
        return Core::WriteIntegerText(out, ConstStorage<std::uint32_t>(view));
    case PropertyKind::UInt64:
        return Core::WriteIntegerText(out, ConstStorage<std::uint64_t>(view));
    case PropertyKind::Float:
        return WriteFloat(out, ConstStorage<float>(view));
    case PropertyKind::Vec2:
    {
        const auto& v = ConstStorage<glm::vec2>(view);
        return WriteComponents(out, {v.x, v.y});
    }
    case PropertyKind::Vec3:
    {
        const auto& v = ConstStorage<glm::vec3>(view);
        return WriteComponents(out, {v.x, v.y, v.z});
    }
    case PropertyKind::Vec4:
    {
        const auto& v = ConstStorage<glm::vec4>(view);
        return WriteComponents(out, {v.x, v.y, v.z, v.w});
    }
    case PropertyKind::Quat:
    {
        const auto& q = ConstStorage<glm::quat>(view);
        return WriteComponents(out, {q.w, q.x, q.y, q.z});
    }
    case PropertyKind::Guid:
        return WriteGuidLeaf(out, ConstStorage<Core::Guid>(view));
    default:
        throw std::runtime_error("Unsupported schema leaf kind.");
    }
}

std::string_view FormatLeaf(PropertyKind kind, const ObjectView& view, SchemaArena& arena)
{
    if (kind == PropertyKind::String)
    {
        return arena.CopyText(ConstStorage<std::string>(view));
    }
    char* const begin = arena.AllocateText(kLeafCapacity);
    char* const end = WriteLeaf(begin, kind, view);
    arena.ShrinkText(end);
    return {begin, static_cast<std::size_t>(end - begin)};
}

void ParseLeaf(PropertyKind kind, std::string_view text, const ObjectView& view)
{
    switch (kind)
    {
    case PropertyKind::Bool:
        Storage<bool>(view) = ParseBool(text);
        return;
    case PropertyKind::Int32:
        Storage<std::int32_t>(view) = ParseInteger<std::int32_t>(text);
        return;
    case PropertyKind::UInt32:
        Storage<std::uint32_t>(view) = ParseInteger<std::uint32_t>(text);
        return;
    case PropertyKind::UInt64:
        Storage<std::uint64_t>(view) = ParseInteger<std::uint64_t>(text);
        return;
    case PropertyKind::Float:
        Storage<float>(view) = ParseFloat(text);
        return;
    case PropertyKind::String:
        Storage<std::string>(view) = text;
        return;
    case PropertyKind::Vec2:
    {
        auto& v = Storage<glm::vec2>(view);
        return ParseComponents(text, {&v.x, &v.y});
    }
    case PropertyKind::Vec3:
    {
        auto& v = Storage<glm::vec3>(view);
        return ParseComponents(text, {&v.x, &v.y, &v.z});
    }
    case PropertyKind::Vec4:
    {
        auto& v = Storage<glm::vec4>(view);
        return ParseComponents(text, {&v.x, &v.y, &v.z, &v.w});
    }
    case PropertyKind::Quat:
    {
        auto& q = Storage<glm::quat>(view);
        return ParseComponents(text, {&q.w, &q.x, &q.y, &q.z});
    }
    case PropertyKind::Guid:
        Storage<Core::Guid>(view) = Core::ParseStableGuid(text);
        return;
    default:
        throw std::runtime_error("Unsupported schema leaf kind.");
    }
}

char* WriteGuidLeaf(char* out, const Core::Guid& guid)
{
    if (!guid.IsValid())
    {
        return out;
    }
    guid.WriteText(out);
    return out + Core::Guid::kTextLength;
}

} // namespace Vornu::Reflection
