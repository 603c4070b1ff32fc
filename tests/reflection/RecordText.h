#pragma once

#include "engine/reflection/SchemaRecordText.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace Vornu::Test
{

/// Reads a record whose text begins with its header line. `lineNumber` ends at the last line read.
inline Reflection::SchemaRecord ReadRecord(Core::LineReader& lines, Reflection::SchemaArena& arena,
                                           bool keepLines, std::uint64_t& lineNumber)
{
    std::string_view header;
    lines.ReadLine(header);
    lineNumber = 1;
    header.remove_prefix(std::string_view("component_schema").size());
    return Reflection::ReadSchemaRecord(header, lines, lineNumber, arena, keepLines);
}

/// `text` outlives the record.
inline Reflection::SchemaRecord ReadRecord(std::string_view text, Reflection::SchemaArena& arena)
{
    Core::LineReader lines(text);
    std::uint64_t lineNumber = 0;
    return ReadRecord(lines, arena, true, lineNumber);
}

inline std::string WriteRecord(const Reflection::SchemaRecord& record)
{
    Core::TextWriter out;
    Reflection::WriteSchemaRecord(out, record);
    return std::string(out.Buffered());
}

} // namespace Vornu::Test
