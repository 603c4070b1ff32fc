#include "engine/reflection/SchemaRecordText.h"

#include "engine/core/NumberText.h"
#include "engine/reflection/SchemaText.h"

#include <stdexcept>
#include <string>

namespace Vornu::Reflection
{
namespace
{

constexpr char kHeaderFault[] = "Invalid component schema header.";
constexpr char kFieldNameFault[] = "Empty or duplicate schema field.";
constexpr char kArrayFault[] = "Array exceeds its element limit.";

class RecordReader
{
public:
    RecordReader(Core::LineReader& source, std::uint64_t& lineNumber, SchemaArena& arena, bool keepLines)
        : source_(source), lineNumber_(lineNumber), arena_(arena), keepLines_(keepLines)
    {
        budget_.bytes = kRecordWord.size();
    }

    SchemaRecord Read(std::string_view headerRest)
    {
        try
        {
            return ReadTop(headerRest);
        }
        catch (const std::runtime_error&)
        {
            // A NUL spoils its line, whatever else is wrong with it. No line with one can be read to its end,
            // so that it is enough to look for it here.
            if (line_.find('\0') != std::string_view::npos)
            {
                throw std::runtime_error("Unescaped NUL in schema record.");
            }
            throw;
        }
    }

private:
    SchemaRecord ReadTop(std::string_view headerRest)
    {
        if (headerRest.empty())
        {
            throw std::runtime_error(kTruncatedRecord);
        }
        ChargeRecordLine(headerRest, budget_);
        line_ = headerRest;
        if (headerRest.size() + kRecordWord.size() > kMaxLineSize)
        {
            throw std::runtime_error("Schema header exceeds the line limit.");
        }
        SchemaLine header(headerRest);
        return ReadObject(header, 1);
    }

    SchemaLine NextLine()
    {
        line_ = {};
        std::string_view line;
        if (!source_.ReadLine(line))
        {
            throw std::runtime_error(kTruncatedRecord);
        }
        ++lineNumber_;
        ChargeRecordLine(line, budget_);
        line_ = line;
        return SchemaLine(line_);
    }

    std::string_view ReadText(SchemaLine& line)
    {
        const std::string_view text = line.ReadQuoted(arena_);
        const bool inLine = text.data() >= line_.data() && text.data() < line_.data() + line_.size();
        return keepLines_ || !inLine ? text : arena_.CopyText(text);
    }

    SchemaRecord ReadObject(SchemaLine& header, std::uint32_t depth)
    {
        const std::string_view name = ReadText(header);
        const std::string_view versionWord = header.ReadWord();
        const std::string_view countWord = header.ReadWord();
        if (countWord.empty())
        {
            throw std::runtime_error("Incomplete component schema header.");
        }
        const std::uint32_t version = ParseSchemaCount(versionWord);
        const std::uint32_t count = ParseSchemaCount(countWord);
        if (name.empty() || version == 0)
        {
            throw std::runtime_error(kHeaderFault);
        }
        budget_.Charge(count, depth);
        header.RequireEnd();

        SchemaRecord record(arena_, name, version, count);
        FieldNameFilter names;
        for (std::uint32_t i = 0; i < count; ++i)
        {
            ReadField(record, names, depth);
        }
        SchemaLine end = NextLine();
        if (end.ReadWord() != "end_component_schema")
        {
            throw std::runtime_error("Missing component schema terminator.");
        }
        end.RequireEnd();
        return record;
    }

    void ReadField(SchemaRecord& record, FieldNameFilter& names, std::uint32_t depth)
    {
        SchemaLine line = NextLine();
        const bool isLeafLine = line.TakeFirstWord("property ");
        const std::string_view word = isLeafLine ? "property" : line.ReadWord();
        const bool isLeaf = isLeafLine || word == "property";
        const bool isObject = !isLeaf && word == "object_property";
        if (!isLeaf && !isObject && word != "array_property")
        {
            throw std::runtime_error("Expected named schema property.");
        }
        const std::string_view name = ReadText(line);
        if (name.empty() || (names.MayRepeat(name) && record.FindField(name) != nullptr))
        {
            throw std::runtime_error(kFieldNameFault);
        }
        if (isLeaf)
        {
            record.Append(name, ReadLeaf(line));
        }
        else if (isObject)
        {
            record.Append(name, ReadNested(line, depth + 1));
        }
        else
        {
            record.Append(name, ReadArray(line, depth + 1));
        }
    }

    SchemaValue ReadLeaf(SchemaLine& line)
    {
        const std::string_view text = ReadText(line);
        line.RequireEnd();
        return text;
    }

    SchemaValue ReadNested(SchemaLine& header, std::uint32_t depth)
    {
        return new (arena_.Allocate<SchemaRecord>(1)) SchemaRecord(ReadObject(header, depth));
    }

    SchemaValue ReadArray(SchemaLine& header, std::uint32_t depth)
    {
        const std::string_view word = header.ReadWord();
        if (word.empty())
        {
            throw std::runtime_error("Missing array count.");
        }
        const std::uint32_t count = ParseSchemaCount(word);
        header.RequireEnd();
        if (count > kMaxElements)
        {
            throw std::runtime_error(kArrayFault);
        }
        budget_.Charge(count, depth);
        const SchemaArray array(arena_, count);
        for (SchemaValue& element : array)
        {
            element = ReadElement(depth);
        }
        SchemaLine end = NextLine();
        if (end.ReadWord() != "end_array")
        {
            throw std::runtime_error("Missing array terminator.");
        }
        end.RequireEnd();
        return array;
    }

    SchemaValue ReadElement(std::uint32_t depth)
    {
        SchemaLine line = NextLine();
        const std::string_view word = line.ReadWord();
        if (word == "value")
        {
            return ReadLeaf(line);
        }
        if (word == "object")
        {
            return ReadNested(line, depth + 1);
        }
        if (word == "array")
        {
            return ReadArray(line, depth + 1);
        }
        throw std::runtime_error("Expected an array element.");
    }

    Core::LineReader& source_;
    std::uint64_t& lineNumber_;
    SchemaArena& arena_;
    SchemaBudget budget_;
    std::string_view line_;
    bool keepLines_;
};

class RecordWriter
{
public:
    explicit RecordWriter(Core::TextWriter& out) : out_(out) {}

    void WriteObject(const SchemaRecord& record, std::uint32_t depth)
    {
        const auto fields = record.Fields();
        if (record.name.empty() || record.version == 0)
        {
            throw std::runtime_error(kHeaderFault);
        }
        budget_.Charge(fields.size(), depth);
        WriteQuoted(record.name);
        WriteNumber(record.version);
        WriteNumber(static_cast<std::uint32_t>(fields.size()));
        EndLine();
        FieldNameFilter names;
        for (std::size_t i = 0; i < fields.size(); ++i)
        {
            if (fields[i].name.empty() ||
                (names.MayRepeat(fields[i].name) && record.FindField(fields[i].name) != &fields[i]))
            {
                throw std::runtime_error(kFieldNameFault);
            }
            WriteField(fields[i], depth);
        }
        out_.Append("end_component_schema");
        EndLine();
    }

    void BeginLine() { lineStart_ = out_.Position(); }
    void Write(std::string_view text) { out_.Append(text); }

private:
    void WriteField(const SchemaField& field, std::uint32_t depth)
    {
        static constexpr std::string_view kWords[] = {"property", "object_property", "array_property"};
        BeginLine();
        out_.Append(kWords[static_cast<std::size_t>(field.value.GetType())]);
        WriteQuoted(field.name);
        WriteValue(field.value, depth);
    }

    void WriteElement(const SchemaValue& value, std::uint32_t depth)
    {
        static constexpr std::string_view kWords[] = {"value", "object", "array"};
        BeginLine();
        out_.Append(kWords[static_cast<std::size_t>(value.GetType())]);
        WriteValue(value, depth);
    }

    void WriteValue(const SchemaValue& value, std::uint32_t depth)
    {
        switch (value.GetType())
        {
        case SchemaValue::Type::Text:
            WriteQuoted(value.Text());
            EndLine();
            break;
        case SchemaValue::Type::Record:
            WriteObject(value.Record(), depth + 1);
            break;
        case SchemaValue::Type::Array:
            WriteArray(value.Array(), depth + 1);
            break;
        }
    }

    void WriteArray(const SchemaArray& array, std::uint32_t depth)
    {
        if (array.Size() > kMaxElements)
        {
            throw std::runtime_error(kArrayFault);
        }
        budget_.Charge(array.Size(), depth);
        WriteNumber(array.Size());
        EndLine();
        for (const SchemaValue& element : array)
        {
            WriteElement(element, depth);
        }
        BeginLine();
        out_.Append("end_array");
        EndLine();
    }

    void WriteQuoted(std::string_view text)
    {
        char* const begin = out_.Reserve(2 * text.size() + 3);
        begin[0] = ' ';
        begin[1] = '"';
        char* const end = WriteEscaped(begin + 2, text);
        *end = '"';
        out_.Commit(static_cast<std::size_t>(end + 1 - begin));
    }

    void WriteNumber(std::uint32_t number)
    {
        char* const begin = out_.Reserve(Core::kNumberTextCapacity);
        *begin = ' ';
        out_.Commit(static_cast<std::size_t>(Core::WriteIntegerText(begin + 1, number) - begin));
    }

    void EndLine()
    {
        const std::uint64_t size = out_.Position() - lineStart_;
        if (size > kMaxLineSize || size + 1 > kMaxRecordSize - budget_.bytes)
        {
            throw std::runtime_error("Schema exceeds its line or record byte budget.");
        }
        budget_.bytes += size + 1;
        out_.Append('\n');
        lineStart_ += size + 1;
    }

    Core::TextWriter& out_;
    SchemaBudget budget_;
    std::uint64_t lineStart_ = 0;
};

} // namespace

SchemaRecord ReadSchemaRecord(std::string_view headerRest, Core::LineReader& source,
                              std::uint64_t& lineNumber, SchemaArena& arena, bool keepLines)
{
    // Without kept lines the header's text goes when the next line is read, but its name is copied by then.
    return RecordReader(source, lineNumber, arena, keepLines).Read(headerRest);
}

void WriteSchemaRecord(Core::TextWriter& out, const SchemaRecord& record)
{
    RecordWriter writer(out);
    writer.BeginLine();
    writer.Write(kRecordWord);
    writer.WriteObject(record, 1);
    out.FlushIfLarge();
    if (!out.Good())
    {
        throw std::runtime_error("Failed to write component schema.");
    }
}

} // namespace Vornu::Reflection
