#include "engine/reflection/SchemaRecordText.h"

#include "engine/core/text/NumberText.h"
#include "engine/reflection/ReflectionRegistry.h"
#include "engine/reflection/SchemaText.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <stdexcept>
#include <string>

namespace Vornu::Reflection
{
namespace
{

constexpr char kHeaderFault[] = "Invalid component schema header.";
constexpr char kFieldNameFault[] = "Empty or duplicate schema field.";
constexpr char kArrayFault[] = "Array exceeds its element limit.";

SchemaValue::Type TypeOfWord(std::string_view word, const std::array<std::string_view, 3>& words,
                             const char* fault)
{
    const auto found = std::find(words.begin(), words.end(), word);
    if (found == words.end())
    {
        throw std::runtime_error(fault);
    }
    return static_cast<SchemaValue::Type>(found - words.begin());
}

/// Guesses the fields of a record: those of a registered type mostly stand in their order, written as the
/// writer does.
class FieldGuess
{
public:
    explicit FieldGuess(const TypeInfo* type) noexcept
    {
        if (type != nullptr)
        {
            left_ = type->properties;
        }
    }

    /// False once a guess was wrong; none is made from then on.
    bool IsRight() const noexcept { return isRight_; }

    /// Takes the keyword and the name from the line when they are the ones that come next.
    const PropertyInfo* Take(SchemaLine& line) noexcept
    {
        while (!left_.empty() && HasFlag(left_.front().attributes.flags, PropertyFlags::Runtime))
        {
            left_ = left_.subspan(1);
        }
        isRight_ = isRight_ && !left_.empty() && line.TakeStart(left_.front().lineHead);
        if (!isRight_)
        {
            return nullptr;
        }
        const PropertyInfo& property = left_.front();
        left_ = left_.subspan(1);
        return &property;
    }

private:
    std::span<const PropertyInfo> left_;
    bool isRight_ = true;
};

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
        ChargeLine(headerRest);
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
        ChargeLine(line);
        line_ = line;
        return SchemaLine(line_);
    }

    void ChargeLine(std::string_view line)
    {
        if (line.size() > kMaxLineSize)
        {
            throw std::runtime_error(kTruncatedRecord);
        }
        if (line.size() + 1 > kMaxRecordSize - budget_.bytes)
        {
            throw std::runtime_error("Schema record exceeds its byte budget.");
        }
        budget_.bytes += line.size() + 1;
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
        FieldGuess guess(ReflectionRegistry::Instance().FindType(name));
        FieldNameFilter names;
        for (std::uint32_t i = 0; i < count; ++i)
        {
            SchemaLine line = NextLine();
            const bool wasRight = guess.IsRight();
            if (const PropertyInfo* const property = guess.Take(line))
            {
                record.Append(property->name, ReadValue(StoredType(property->schema.shape), line, depth));
                continue;
            }
            if (wasRight)
            {
                names.Insert(record);
            }
            ReadField(record, names, line, depth);
        }
        ReadTerminator("end_component_schema", "Missing component schema terminator.");
        return record;
    }

    void ReadTerminator(std::string_view word, const char* fault)
    {
        SchemaLine line = NextLine();
        if (line_ == word)
        {
            return;
        }
        if (line.ReadWord() != word)
        {
            throw std::runtime_error(fault);
        }
        line.RequireEnd();
    }

    void ReadField(SchemaRecord& record, FieldNameFilter& names, SchemaLine& line, std::uint32_t depth)
    {
        const SchemaValue::Type type =
            TypeOfWord(line.ReadWord(), kFieldWords, "Expected named schema property.");
        const std::string_view name = ReadText(line);
        if (name.empty() || (names.MayRepeat(name) && record.FindField(name) != nullptr))
        {
            throw std::runtime_error(kFieldNameFault);
        }
        record.Append(name, ReadValue(type, line, depth));
    }

    SchemaValue ReadElement(std::uint32_t depth)
    {
        SchemaLine line = NextLine();
        if (line.TakeStart("value "))
        {
            return ReadLeaf(line);
        }
        return ReadValue(TypeOfWord(line.ReadWord(), kElementWords, "Expected an array element."), line,
                         depth);
    }

    /// Reads what stands behind the keyword, and the name of a field.
    SchemaValue ReadValue(SchemaValue::Type type, SchemaLine& line, std::uint32_t depth)
    {
        switch (type)
        {
        case SchemaValue::Type::Record:
            return ReadNested(line, depth + 1);
        case SchemaValue::Type::Array:
            return ReadArray(line, depth + 1);
        case SchemaValue::Type::Text:
            break;
        }
        return ReadLeaf(line);
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
        ReadTerminator("end_array", "Missing array terminator.");
        return array;
    }

    Core::LineReader& source_;
    std::uint64_t& lineNumber_;
    SchemaArena& arena_;
    SchemaBudget budget_;
    std::string_view line_;
    bool keepLines_;
};

/// Writes the parts of lines.
class LineText
{
public:
    explicit LineText(Core::TextWriter& out) : out_(out) {}

    std::uint64_t Position() const noexcept { return out_.Position(); }
    void Append(std::string_view text) { out_.Append(text); }

    /// A word, a blank and the text in quotes.
    void AppendQuoted(std::string_view word, std::string_view text)
    {
        char* const begin = out_.Reserve(word.size() + EscapedCapacity(text.size()) + 3);
        std::memcpy(begin, word.data(), word.size());
        char* at = begin + word.size();
        *at++ = ' ';
        *at++ = '"';
        at = WriteEscaped(at, text);
        *at++ = '"';
        out_.Commit(static_cast<std::size_t>(at - begin));
    }

    /// A blank and the number.
    void AppendNumber(std::uint32_t number)
    {
        char* const begin = out_.Reserve(Core::kNumberTextCapacity);
        *begin = ' ';
        out_.Commit(static_cast<std::size_t>(Core::WriteIntegerText(begin + 1, number) - begin));
    }

private:
    Core::TextWriter& out_;
};

/// Counts the bytes that `LineText` would write.
class LineSize
{
public:
    std::uint64_t Position() const noexcept { return size_; }
    void Append(std::string_view text) noexcept { size_ += text.size(); }
    void AppendQuoted(std::string_view word, std::string_view text)
    {
        size_ += word.size() + EscapedSize(text) + 3;
    }
    void AppendNumber(std::uint32_t number)
    {
        char digits[Core::kNumberTextCapacity];
        size_ += static_cast<std::uint64_t>(Core::WriteIntegerText(digits, number) - digits) + 1;
    }

private:
    std::uint64_t size_ = 0;
};

/// Writes a record through `LineText`, or measures it through `LineSize`.
template<class Lines>
class RecordWriter
{
public:
    explicit RecordWriter(Lines lines) : lines_(lines) {}

    /// Gives the bytes of the record.
    std::uint64_t Write(const SchemaRecord& record)
    {
        const std::uint64_t begin = lines_.Position();
        lineStart_ = begin;
        WriteObject(kRecordWord, record, 1);
        return lines_.Position() - begin;
    }

private:
    void WriteObject(std::string_view word, const SchemaRecord& record, std::uint32_t depth)
    {
        const auto fields = record.Fields();
        if (record.name.empty() || record.version == 0)
        {
            throw std::runtime_error(kHeaderFault);
        }
        budget_.Charge(fields.size(), depth);
        lines_.AppendQuoted(word, record.name);
        lines_.AppendNumber(record.version);
        lines_.AppendNumber(static_cast<std::uint32_t>(fields.size()));
        EndLine();
        FieldNameFilter names;
        for (const SchemaField& field : fields)
        {
            if (field.name.empty() || (names.MayRepeat(field.name) && record.FindField(field.name) != &field))
            {
                throw std::runtime_error(kFieldNameFault);
            }
            lines_.AppendQuoted(kFieldWords[static_cast<std::size_t>(field.value.GetType())], field.name);
            WriteValue("", field.value, depth);
        }
        lines_.Append("end_component_schema");
        EndLine();
    }

    /// Goes on with a line: `word` comes next, then the value.
    void WriteValue(std::string_view word, const SchemaValue& value, std::uint32_t depth)
    {
        switch (value.GetType())
        {
        case SchemaValue::Type::Text:
            lines_.AppendQuoted(word, value.Text());
            EndLine();
            break;
        case SchemaValue::Type::Record:
            WriteObject(word, value.Record(), depth + 1);
            break;
        case SchemaValue::Type::Array:
            WriteArray(word, value.Array(), depth + 1);
            break;
        }
    }

    void WriteArray(std::string_view word, const SchemaArray& array, std::uint32_t depth)
    {
        if (array.Size() > kMaxElements)
        {
            throw std::runtime_error(kArrayFault);
        }
        budget_.Charge(array.Size(), depth);
        lines_.Append(word);
        lines_.AppendNumber(array.Size());
        EndLine();
        for (const SchemaValue& element : array)
        {
            WriteValue(kElementWords[static_cast<std::size_t>(element.GetType())], element, depth);
        }
        lines_.Append("end_array");
        EndLine();
    }

    void EndLine()
    {
        const std::uint64_t size = lines_.Position() - lineStart_;
        if (size > kMaxLineSize || size + 1 > kMaxRecordSize - budget_.bytes)
        {
            throw std::runtime_error("Schema exceeds its line or record byte budget.");
        }
        budget_.bytes += size + 1;
        lines_.Append("\n");
        lineStart_ += size + 1;
    }

    Lines lines_;
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
    RecordWriter(LineText(out)).Write(record);
    out.FlushIfLarge();
    if (!out.Good())
    {
        throw std::runtime_error("Failed to write component schema.");
    }
}

std::uint64_t MeasureSchemaRecord(const SchemaRecord& record)
{
    return RecordWriter(LineSize()).Write(record);
}

} // namespace Vornu::Reflection
