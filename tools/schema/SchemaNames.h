#pragma once

#include "engine/reflection/PropertyTypes.h"
#include "engine/scene/registration/ComponentTypeEntry.h"

#include <string>
#include <string_view>
#include <vector>

/// The names by which `vornu-schema` prints what the registries hold as numbers.
namespace Vornu::Schema
{

/// "Array" for a collection, else the name of the kind.
std::string_view KindName(const Reflection::ValueSchema& schema);

std::vector<std::string_view> AttributeNames(Reflection::PropertyFlags flags);
std::vector<std::string_view> FlagNames(Scene::ComponentFlags flags);

std::vector<std::string_view> AliasNames(const Scene::ComponentTypeEntry& entry);
std::vector<std::string_view> SaveGameFieldNames(const Scene::ComponentTypeEntry& entry);

/// In decimal.
std::string EnumNumber(const Reflection::EnumValue& value);

/// The shortest plain decimal text that reads back as the same float, without an exponent. `value` is finite.
std::string ShortNumber(float value);

} // namespace Vornu::Schema
