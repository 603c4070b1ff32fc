#pragma once

#include "engine/core/text/TextWriter.h"
#include "engine/reflection/ObjectView.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace Vornu::Reflection
{

class ReflectionRegistry;
struct SchemaCodecContext;
struct TypeInfo;

/// Writes the record of an object straight to text: the bytes that `WriteSchemaRecord` writes of what
/// `CaptureObject` gives, without the record between them. Throws where either of them would, after some of
/// the text and with words of its own: a caller that needs theirs captures the object once more.
void WriteObjectRecord(Core::TextWriter& out, const ObjectView& object, const ReflectionRegistry& registry,
                       const SchemaCodecContext& context);

/// What the first line of a record says.
struct RecordHead
{
    std::string_view name;
    std::uint32_t version = 0;
    std::uint32_t fieldCount = 0;
};

/// Reads a record's first line behind its keyword, as it is written; nothing for any other form.
std::optional<RecordHead> ReadRecordHead(std::string_view headerRest);

/// How much of a text was read.
struct ReadText
{
    std::size_t bytes = 0; // 0 when nothing was
    std::uint32_t lines = 0;
};

/// Reads the lines of a record behind its first one straight onto an object of the type, in the form in which
/// `WriteObjectRecord` writes them, all fields of the type's present version included. Gives nothing for text
/// of any other form, however sound, for a value that doesn't fit, and where the text ends before the record.
/// The object is partly written then, and the record is to be read and applied, which takes every form and
/// has the words for what is wrong.
ReadText ReadObjectFields(std::string_view text, const RecordHead& head, const TypeInfo& type,
                          const ObjectView& object, const ReflectionRegistry& registry,
                          const SchemaCodecContext& context);

} // namespace Vornu::Reflection
