#include "engine/core/text/LineReader.h"
#include "engine/core/text/TextWriter.h"
#include "engine/reflection/SchemaRecordText.h"
#include "fuzz/FuzzFiles.h"

#include <stdexcept>
#include <string_view>

namespace
{

using namespace Vornu;

Reflection::SchemaRecord Parse(std::string_view text, Reflection::SchemaArena& arena)
{
    Core::LineReader lines(text);
    std::string_view header;
    lines.ReadLine(header);
    std::uint64_t lineNumber = 1;
    return Reflection::ReadSchemaRecord(header, lines, lineNumber, arena, true);
}

std::string Write(const Reflection::SchemaRecord& record)
{
    Core::TextWriter out;
    Reflection::WriteSchemaRecord(out, record);
    return std::string(out.Buffered());
}

} // namespace

/// The input is a record without the word that opens it. What can be read can be written, unless the escapes
/// make it too long, and reads again as the same.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Reflection::SchemaArena arena;
    Reflection::SchemaRecord record;
    try
    {
        record = Parse(Fuzz::AsText(data, size), arena);
    }
    catch (const std::runtime_error&)
    {
        return 0;
    }
    std::string first;
    try
    {
        first = Write(record);
    }
    catch (const std::runtime_error& fault)
    {
        Fuzz::Require(std::string_view(fault.what()) == "Schema exceeds its line or record byte budget.",
                      std::string("a record doesn't write: ") + fault.what());
        return 0;
    }
    constexpr std::string_view kWord = "component_schema";
    Reflection::SchemaArena again;
    Fuzz::Require(Write(Parse(std::string_view(first).substr(kWord.size()), again)) == first,
                  "a record changed over a write and a read");
    return 0;
}
