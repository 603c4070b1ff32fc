#include "engine/reflection/SchemaRecordText.h"

#include "engine/reflection/SchemaText.h"
#include "tests/core/Failure.h"
#include "tests/core/TestFolder.h"
#include "tests/reflection/RecordText.h"

#include <gtest/gtest.h>

#include <string>

namespace Vornu::Reflection
{
namespace
{

using Test::FailureOf;
using Test::ReadRecord;
using Test::TestFolder;
using Test::WriteRecord;
using namespace std::string_literals;

const std::string kEnd = "end_component_schema\n";

/// The record written back, or "<line>: <fault>".
std::string ReadAndWrite(const std::string& text)
{
    Core::LineReader lines(text);
    SchemaArena arena;
    std::uint64_t lineNumber = 0;
    std::string result;
    const std::string fault =
        FailureOf([&] { result = WriteRecord(ReadRecord(lines, arena, true, lineNumber)); });
    return fault == "none" ? result : std::to_string(lineNumber) + ": " + fault;
}

/// A record of `fields` fields that stand in `body`.
std::string Record(std::size_t fields, const std::string& body)
{
    return "component_schema \"A\" 1 " + std::to_string(fields) + "\n" + body + kEnd;
}

std::string Repeat(const std::string& text, std::size_t count)
{
    std::string result;
    for (std::size_t i = 0; i < count; ++i)
    {
        result += text;
    }
    return result;
}

std::string Array(const std::string& name, std::size_t count)
{
    return "array_property \"" + name + "\" " + std::to_string(count) + "\n" + Repeat("value \"\"\n", count) +
           "end_array\n";
}

const std::string kAllForms = R"(component_schema "A" 7 4
property "leaf" "a\tb\"\\ 1"
object_property "object" "B" 2 1
property "leaf" ""
end_component_schema
array_property "array" 3
value "x"
object "C" 1 0
end_component_schema
array 1
array 0
end_array
end_array
end_array
array_property "empty" 0
end_array
end_component_schema
)";

TEST(SchemaRecordText, RecordsSurviveReadingAndWriting)
{
    EXPECT_EQ(ReadAndWrite(kAllForms), kAllForms);
    // Blanks between tokens, leading zeros, carriage returns and a last line without its end do no harm.
    EXPECT_EQ(ReadAndWrite("component_schema\t\"A\"007\v0001 \r\n  property  \"f\"\"v\" \r\n"
                           "\tend_component_schema\r"),
              "component_schema \"A\" 7 1\nproperty \"f\" \"v\"\n" + kEnd);

    std::string bytes;
    for (int c = 0; c < 256; ++c)
    {
        bytes.push_back(static_cast<char>(c));
    }
    SchemaArena arena;
    SchemaRecord record(arena, bytes, 1);
    record.AddField(bytes, bytes);
    const std::string text = WriteRecord(record);
    const SchemaRecord back = ReadRecord(text, arena);
    EXPECT_EQ(back.name, bytes);
    EXPECT_EQ(back.FindField(bytes)->value.Text(), bytes);
}

TEST(SchemaRecordText, TextsOutliveLinesThatAreNotKept)
{
    const TestFolder folder;
    const std::string text = Record(4, "property \"" + std::string(60000, 'a') + "\" \"\"\n" +
                                           "property \"b\" \"" + std::string(60000, 'b') + "\"\n" +
                                           Array("c", 1024) + "object_property \"d\" \"D\" 1 0\n" + kEnd);
    Core::InputFile file(folder.Write("record.txt", text));
    Core::LineReader lines(file);
    SchemaArena arena;
    std::uint64_t lineNumber = 0;
    EXPECT_EQ(WriteRecord(ReadRecord(lines, arena, false, lineNumber)), text);
    EXPECT_EQ(lineNumber, 1032u);
}

TEST(SchemaRecordText, FaultsTellTheFirstFailedCheckAndItsLine)
{
    const std::string budget = "Schema exceeds the nesting or field budget.";
    const std::string number = "Invalid or out-of-range numeric value.";
    const std::string trailing = "Unexpected trailing schema data.";
    const std::string truncated = "Truncated or oversized component schema record.";
    const std::string nul = "Unescaped NUL in schema record.";
    const std::string a = "component_schema \"A\" 1 1\n";
    const std::pair<std::string, std::string> rows[] = {
        {"component_schema", "1: " + truncated},
        {"component_schema ", "1: Malformed quoted schema token."},
        {"component_schema \"A\" 1", "1: Incomplete component schema header."},
        {"component_schema \"A\" x", "1: Incomplete component schema header."},
        {"component_schema \"\" -1 0", "1: " + number},
        {"component_schema \"A\" 1 4294967296", "1: " + number},
        {"component_schema \"\" 1 1025", "1: Invalid component schema header."},
        {"component_schema \"A\" 0 0", "1: Invalid component schema header."},
        {"component_schema \"A\" 1 1025 x", "1: " + budget},
        {"component_schema \"A\" 1 0 x", "1: " + trailing},
        {"component_schema \"A\" 1 0 \0"s, "1: " + nul},
        {"component_schema \"A\" 1 0", "1: " + truncated},
        {a, "1: " + truncated},
        {a + "\n", "2: Expected named schema property."},
        {a + "# note\n", "2: Expected named schema property."},
        {a + "value \"x\"", "2: Expected named schema property."},
        {a + kEnd, "2: Expected named schema property."},
        {a + "property f", "2: Malformed quoted schema token."},
        {a + "property \"\" \"v\"", "2: Empty or duplicate schema field."},
        {a + "property \"f\"", "2: Malformed quoted schema token."},
        {a + "property \"f\" \"v\" x", "2: " + trailing},
        {a + "property \"f\" \"v\0\""s, "2: " + nul},
        {a + "property \"f\" \"v\" \0"s, "2: " + nul},
        {a + "pro\0perty \"f\" \"v\""s, "2: " + nul},
        {a + "property \"f\" \"v\"\n", "2: " + truncated},
        {a + "property \"f\" \"v\"\nproperty \"g\" \"v\"\n", "3: Missing component schema terminator."},
        {a + "property \"f\" \"v\"\nend_array\n", "3: Missing component schema terminator."},
        {a + "property \"f\" \"v\"\nend_component_schema x\n", "3: " + trailing},
        {Record(2, "property \"f\" \"\"\narray_property \"f\" 9999 x\n"),
         "3: Empty or duplicate schema field."},
        {a + "object_property \"f\" \"B\"", "2: Incomplete component schema header."},
        {a + "object_property \"f\" \"B\" 0 0", "2: Invalid component schema header."},
        {a + "object_property \"f\" \"B\" 1 0\nend_array", "3: Missing component schema terminator."},
        {a + "array_property \"f\"", "2: Missing array count."},
        {a + "array_property \"f\" +1", "2: " + number},
        {a + "array_property \"f\" 1025 x", "2: " + trailing},
        {a + "array_property \"f\" 1025", "2: Array exceeds its element limit."},
        {a + "array_property \"f\" 1\nproperty \"g\" \"\"", "3: Expected an array element."},
        {a + "array_property \"f\" 1\nend_array", "3: Expected an array element."},
        {a + "array_property \"f\" 1\nvalue \"\" x", "3: " + trailing},
        {a + "array_property \"f\" 1\narray", "3: Missing array count."},
        {a + "array_property \"f\" 1\nvalue \"\"\nvalue \"\"", "4: Missing array terminator."},
        {a + "array_property \"f\" 0\nend_array x", "3: " + trailing},
        {a + "array_property \"f\" 0", "2: " + truncated},
    };
    for (const auto& [text, expected] : rows)
    {
        EXPECT_EQ(ReadAndWrite(text), expected) << text;
    }
}

/// A field that is nested `depth` deep under a record of its own: objects or arrays all the way.
std::string Nested(bool objects, std::size_t depth)
{
    return objects ? Repeat("object_property \"f\" \"B\" 1 1\n", depth) + "property \"f\" \"\"\n" +
                         Repeat(kEnd, depth)
                   : "array_property \"f\" 1\n" + Repeat("array 1\n", depth - 1) + "value \"\"\n" +
                         Repeat("end_array\n", depth);
}

TEST(SchemaRecordText, CountLimitsAreExact)
{
    const std::string budget = "Schema exceeds the nesting or field budget.";
    for (const bool objects : {true, false})
    {
        const std::string deepest = Record(1, Nested(objects, 15));
        EXPECT_EQ(ReadAndWrite(deepest), deepest);
        EXPECT_EQ(ReadAndWrite(Record(1, Nested(objects, 16))), "17: " + budget);
    }
    const std::string full =
        Record(4, Array("a", 1024) + Array("b", 1024) + Array("c", 1024) + Array("d", 1020));
    EXPECT_EQ(ReadAndWrite(full), full);
    EXPECT_EQ(
        ReadAndWrite(Record(4, Array("a", 1024) + Array("b", 1024) + Array("c", 1024) + Array("d", 1021))),
        "3080: " + budget);

    SchemaArena arena;
    SchemaRecord record(arena, "A", 1);
    for (const char* const name : {"a", "b", "c", "d"})
    {
        record.Append(name, SchemaArray(arena, 1024));
    }
    EXPECT_EQ(FailureOf([&] { WriteRecord(record); }), budget);
    SchemaRecord oversized(arena, "A", 1);
    oversized.Append("a", SchemaArray(arena, 1025));
    EXPECT_EQ(FailureOf([&] { WriteRecord(oversized); }), "Array exceeds its element limit.");
    SchemaRecord wide(arena, "A", 1);
    for (int i = 0; i <= 1024; ++i)
    {
        wide.AddField(std::to_string(i), "");
    }
    EXPECT_EQ(FailureOf([&] { WriteRecord(wide); }), budget);
    wide.RemoveFields({"7"});
    EXPECT_EQ(ReadAndWrite(WriteRecord(wide)), WriteRecord(wide));
    SchemaRecord deep(arena, "A", 1);
    for (int depth = 1; depth <= 16; ++depth)
    {
        EXPECT_EQ(FailureOf([&] { WriteRecord(deep); }), "none");
        SchemaRecord outer(arena, "A", 1);
        outer.Append("f", new (arena.Allocate<SchemaRecord>(1)) SchemaRecord(deep));
        deep = outer;
    }
    EXPECT_EQ(FailureOf([&] { WriteRecord(deep); }), budget);
}

TEST(SchemaRecordText, ByteLimitsAreExact)
{
    const std::string oversized = "Truncated or oversized component schema record.";
    const std::string writeFault = "Schema exceeds its line or record byte budget.";
    const auto leaf = [](const std::string& name, std::size_t lineSize)
    { return "property \"" + name + "\" \"" + std::string(lineSize - name.size() - 14, 'x') + "\""; };
    const std::string longest = Record(1, leaf("f", 65535) + "\n");
    EXPECT_EQ(ReadAndWrite(longest), longest);
    EXPECT_EQ(ReadAndWrite(Record(1, leaf("f", 65535) + "\r\n")), longest);
    EXPECT_EQ(ReadAndWrite(Record(1, leaf("f", 65536) + "\n")), "2: " + oversized);
    SchemaArena arena;
    SchemaRecord record(arena, "A", 1);
    record.AddField("f", std::string(65536 - 15, 'x'));
    EXPECT_EQ(FailureOf([&] { WriteRecord(record); }), writeFault);

    // The word and the rest of the header line share one line's limit.
    const auto header = [](std::size_t size)
    { return "component_schema \"" + std::string(size - 23, 'n') + "\" 1 0\n" + kEnd; };
    EXPECT_EQ(ReadAndWrite(header(65535)), header(65535));
    EXPECT_EQ(ReadAndWrite(header(65536)), "1: Schema header exceeds the line limit.");
    EXPECT_EQ(ReadAndWrite(header(65552)), "1: " + oversized);

    // Header, 16 longest lines and the terminator leave so much for one further line and its end.
    std::string lines;
    for (const char name : "abcdefghijklmno"s)
    {
        lines += leaf(std::string(1, name), 65535) + "\n";
    }
    const std::size_t room = 1048576 - Record(16, lines).size() - 1;
    const std::string largest = Record(16, lines + leaf("p", room) + "\n");
    ASSERT_EQ(largest.size(), 1048576u);
    EXPECT_EQ(ReadAndWrite(largest), largest);
    EXPECT_EQ(ReadAndWrite(Record(16, lines + leaf("p", room + 1) + "\n")),
              "18: Schema record exceeds its byte budget.");
    SchemaRecord larger = CopyRecord(ReadRecord(largest, arena), arena);
    larger.RenameField("p", "pp");
    EXPECT_EQ(FailureOf([&] { WriteRecord(larger); }), writeFault);
}

TEST(SchemaRecordText, WriterRefusesBadRecordsAndFailedSinks)
{
    SchemaArena arena;
    constexpr char kHeader[] = "Invalid component schema header.";
    constexpr char kField[] = "Empty or duplicate schema field.";
    EXPECT_EQ(FailureOf([&] { WriteRecord(SchemaRecord(arena, "", 1)); }), kHeader);
    EXPECT_EQ(FailureOf([&] { WriteRecord(SchemaRecord(arena, "A", 0)); }), kHeader);
    SchemaRecord record(arena, "A", 1);
    record.AddField("f", "");
    record.AddField("g", "");
    record.AddField("f", "");
    EXPECT_EQ(FailureOf([&] { WriteRecord(record); }), kField);
    SchemaRecord unnamed(arena, "A", 1);
    unnamed.AddField("", "");
    EXPECT_EQ(FailureOf([&] { WriteRecord(unnamed); }), kField);

    Core::TextWriter out([](std::string_view) { return false; });
    out.Append("x");
    EXPECT_FALSE(out.Flush());
    EXPECT_EQ(FailureOf([&] { WriteSchemaRecord(out, SchemaRecord(arena, "A", 1)); }),
              "Failed to write component schema.");
}

TEST(SchemaRecordText, MigrationsRewriteRecordsInPlace)
{
    SchemaArena arena;
    SchemaRecord record;
    {
        SchemaArena source;
        const std::string text = kAllForms;
        record = CopyRecord(ReadRecord(text, source), arena);
    }
    EXPECT_EQ(WriteRecord(record), kAllForms);
    record.RenameField("leaf", "array"); // taken
    record.RenameField("missing", "other");
    record.RenameField("leaf", "text");
    record.RemoveFields({"object", "empty", "missing"});
    record.AddField("added", "1");
    record.ForEachRecord("array", [](SchemaRecord& element) { element.AddField("x", "y"); });
    record.ForEachRecord("text", [](SchemaRecord&) { ADD_FAILURE(); });
    EXPECT_EQ(WriteRecord(record), R"(component_schema "A" 7 3
property "text" "a\tb\"\\ 1"
array_property "array" 3
value "x"
object "C" 1 1
property "x" "y"
end_component_schema
array 1
array 0
end_array
end_array
end_array
property "added" "1"
end_component_schema
)");
}

} // namespace
} // namespace Vornu::Reflection
