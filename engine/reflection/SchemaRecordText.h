#pragma once

#include "engine/core/text/LineReader.h"
#include "engine/core/text/TextWriter.h"
#include "engine/reflection/SchemaRecord.h"

#include <cstdint>
#include <string_view>

namespace Vornu::Reflection
{

/// Reads the record whose header line is `component_schema` followed by `headerRest`; its further lines come
/// from `source`. `lineNumber` goes up by one for every line read.
///
/// With `keepLines` the lines outlive the record, which then refers to them; otherwise its texts are copied
/// into the arena. Names of fields of registered types are those of the registry, which no other thread may
/// change meanwhile. Throws `std::runtime_error` on any fault.
SchemaRecord ReadSchemaRecord(std::string_view headerRest, Core::LineReader& source,
                              std::uint64_t& lineNumber, SchemaArena& arena, bool keepLines);

/// Writes a record. Throws `std::runtime_error` when it breaks a limit or the writer has failed.
void WriteSchemaRecord(Core::TextWriter& out, const SchemaRecord& record);

/// The bytes that `WriteSchemaRecord` would write. Throws like that when the record breaks a limit.
std::uint64_t MeasureSchemaRecord(const SchemaRecord& record);

} // namespace Vornu::Reflection
