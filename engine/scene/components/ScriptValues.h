#pragma once

#include "engine/scene/components/ScriptComponents.h"

#include <stdexcept>
#include <string>
#include <string_view>

/// The stored text of a script field's value: that of a schema leaf of the kind, whole numbers in decimal,
/// and 17 significant digits for a double.
namespace Vornu::Scene
{

/// Throws `std::runtime_error` for a type that isn't known, and for a value that isn't of the type or has no
/// text.
std::string FormatScriptValue(ScriptFieldType type, const ScriptValue& value);

/// Throws `std::runtime_error` for text that isn't of the type.
ScriptValue ParseScriptValue(ScriptFieldType type, std::string_view text);

} // namespace Vornu::Scene
