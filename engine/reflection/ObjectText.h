#pragma once

#include "engine/core/text/TextWriter.h"
#include "engine/reflection/ObjectView.h"

namespace Vornu::Reflection
{

class ReflectionRegistry;
struct SchemaCodecContext;

/// Writes the record of an object straight to text: the bytes that `WriteSchemaRecord` writes of what
/// `CaptureObject` gives, without the record between them. Throws where either of them would, after some of
/// the text and with words of its own: a caller that needs theirs captures the object once more.
void WriteObjectRecord(Core::TextWriter& out, const ObjectView& object, const ReflectionRegistry& registry,
                       const SchemaCodecContext& context);

} // namespace Vornu::Reflection
