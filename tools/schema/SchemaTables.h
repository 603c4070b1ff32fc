#pragma once

#include "engine/reflection/ReflectionRegistry.h"
#include "engine/reflection/SchemaRecord.h"
#include "engine/scene/registration/ComponentRegistry.h"

namespace Vornu::Schema
{

/// What is printed.
struct SchemaTables
{
    const Reflection::ReflectionRegistry& reflection;
    const Scene::ComponentRegistry& components;
};

/// A property's default as a record would hold it, with its texts in `arena`. Throws `std::runtime_error` for
/// a property of kind Custom and for a default that names an asset or an entity.
Reflection::SchemaValue CaptureDefault(const Reflection::PropertyInfo& property,
                                       const Reflection::ReflectionRegistry& registry,
                                       Reflection::SchemaArena& arena);

} // namespace Vornu::Schema
