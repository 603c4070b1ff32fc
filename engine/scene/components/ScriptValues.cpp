#include "engine/scene/components/ScriptValues.h"

#include "engine/core/text/NumberText.h"
#include "engine/reflection/SchemaCodec.h"
#include "engine/reflection/SchemaText.h"

#include <cmath>
#include <stdexcept>

namespace Vornu::Scene
{
namespace
{

constexpr char kUnsupported[] = "Unsupported script field type.";

/// Calls `visit` with a value of the C++ type that a field type holds.
template<class Visit>
auto VisitType(ScriptFieldType type, Visit visit)
{
    switch (type)
    {
    case ScriptFieldType::Bool:
        return visit(bool());
    case ScriptFieldType::Int32:
    case ScriptFieldType::Enum:
        return visit(std::int32_t());
    case ScriptFieldType::UInt32:
        return visit(std::uint32_t());
    case ScriptFieldType::Int64:
        return visit(std::int64_t());
    case ScriptFieldType::Float:
        return visit(float());
    case ScriptFieldType::Double:
        return visit(double());
    case ScriptFieldType::String:
    case ScriptFieldType::AssetReference:
        return visit(std::string());
    case ScriptFieldType::Vector2:
        return visit(glm::vec2());
    case ScriptFieldType::Vector3:
    case ScriptFieldType::Color:
        return visit(glm::vec3());
    case ScriptFieldType::Vector4:
        return visit(glm::vec4());
    case ScriptFieldType::Quaternion:
        return visit(glm::quat());
    case ScriptFieldType::EntityReference:
        return visit(Core::Guid());
    }
    throw std::runtime_error(kUnsupported);
}

std::string Format(std::int64_t value)
{
    return std::to_string(value);
}

std::string Format(double value)
{
    if (!std::isfinite(value))
    {
        throw std::runtime_error("Cannot save a non-finite schema value.");
    }
    char text[Core::kNumberTextCapacity];
    return {text, Core::WriteDoubleText(text, value)};
}

template<class Value>
std::string Format(const Value& value)
{
    Reflection::SchemaArena arena;
    return std::string(
        Reflection::FormatLeaf(Reflection::NaturalKind<Value>(), Reflection::ViewOf(value), arena));
}

void Parse(std::string_view text, bool& value)
{
    if (text != "0" && text != "1")
    {
        throw std::runtime_error("Script boolean must be 0 or 1.");
    }
    value = text == "1";
}

void Parse(std::string_view text, std::int64_t& value)
{
    const std::optional<std::int64_t> number = Core::ParseIntegerText<std::int64_t>(text);
    if (!number)
    {
        throw std::runtime_error("Invalid or out-of-range numeric value.");
    }
    value = *number;
}

void Parse(std::string_view text, double& value)
{
    const std::optional<double> number = Core::ParseDoubleText(text);
    if (!number)
    {
        throw std::runtime_error("Invalid or out-of-range numeric value.");
    }
    if (!std::isfinite(*number))
    {
        throw std::runtime_error("Non-finite numeric value.");
    }
    value = *number;
}

template<class Value>
void Parse(std::string_view text, Value& value)
{
    Reflection::ParseLeaf(Reflection::NaturalKind<Value>(), text, Reflection::ViewOf(value));
}

} // namespace

std::string FormatScriptValue(ScriptFieldType type, const ScriptValue& value)
{
    return VisitType(type,
                     [&value](auto example)
                     {
                         const auto* const held = std::get_if<decltype(example)>(&value);
                         if (held == nullptr)
                         {
                             throw std::runtime_error("Cannot format schema value.");
                         }
                         return Format(*held);
                     });
}

ScriptValue ParseScriptValue(ScriptFieldType type, std::string_view text)
{
    return VisitType(type,
                     [text](auto value) -> ScriptValue
                     {
                         Parse(text, value);
                         return value;
                     });
}

} // namespace Vornu::Scene
