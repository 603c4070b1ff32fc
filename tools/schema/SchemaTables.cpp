#include "tools/schema/SchemaTables.h"

#include "engine/reflection/SchemaCodec.h"

namespace Vornu::Schema
{

Reflection::SchemaValue CaptureDefault(const Reflection::PropertyInfo& property,
                                       const Reflection::ReflectionRegistry& registry,
                                       Reflection::SchemaArena& arena)
{
    constexpr std::uint32_t kFieldDepth = 2; // that of a field of an outermost record
    const Reflection::SchemaCodecContext context;
    Reflection::CodecState state{registry, context, arena};
    return Reflection::EncodeTypedValue(property.DefaultView(), property.schema, property.attributes, state,
                                        kFieldDepth);
}

} // namespace Vornu::Schema
