#include "engine/core/text/TokenReader.h"
#include "engine/reflection/SchemaRecordText.h"
#include "engine/reflection/SchemaText.h"
#include "engine/scene/files/SceneStage.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>

namespace Vornu::Scene
{
namespace
{

/// A failure whose text goes to the caller without the line.
class WholeFileFault : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

constexpr std::string_view kRecordOnlyWords[] = {
    "property", "object_property", "array_property", "end_component_schema",
    "value",    "object",          "array",          "end_array"};

std::string QuotePath(const std::filesystem::path& path)
{
    return "\"" + (path.empty() ? std::string("<scene file>") : path.native()) + "\"";
}

const std::string kConvertHint = "with the offline tool: vornu-upgrade --content <ProjectContentFolder> ";

class SceneTextReader
{
public:
    SceneTextReader(Core::LineReader& source, SceneSink& sink, const std::filesystem::path& path)
        : source_(source), sink_(sink), path_(path), keepsLines_(sink.KeepsRecords())
    {
    }

    std::uint64_t LineNumber() const noexcept { return lineNumber_; }

    void Read()
    {
        for (;;)
        {
            lineStart_ = source_.Position();
            std::string_view line;
            if (!source_.ReadLine(line))
            {
                break;
            }
            ++lineNumber_;
            if (!line.empty() && line.front() != '#')
            {
                ReadLine(line);
            }
            if (!keepsLines_)
            {
                source_.ReleaseLines();
            }
        }
        if (!headerSeen_)
        {
            throw WholeFileFault("Scene file is missing a valid header.");
        }
        if (source_.Failed() || inEntity_)
        {
            throw WholeFileFault("Scene read failed or entity terminator is missing.");
        }
    }

private:
    void ReadLine(std::string_view line)
    {
        Core::TokenReader tokens(line);
        const std::string_view word = tokens.ReadWord();
        if (word.empty())
        {
            return;
        }
        if (word == "scene_version")
        {
            return ReadHeader(tokens);
        }
        if (!headerSeen_)
        {
            throw std::runtime_error("Scene records require a version header.");
        }
        if (word == Reflection::kRecordWord)
        {
            return ReadRecord(line, word);
        }
        if (word == "entity")
        {
            return ReadEntity(tokens);
        }
        if (word == "parent")
        {
            return ReadParent(tokens);
        }
        if (word == "end_entity")
        {
            return EndEntity();
        }
        if (std::find(std::begin(kRecordOnlyWords), std::end(kRecordOnlyWords), word) !=
            std::end(kRecordOnlyWords))
        {
            throw std::runtime_error("Schema property or terminator outside a schema record.");
        }
        throw std::runtime_error("Unsupported scene record '" + std::string(word) +
                                 "'. Positional records are a legacy format; convert the file " +
                                 kConvertHint + QuotePath(path_));
    }

    void ReadHeader(Core::TokenReader& tokens)
    {
        if (headerSeen_)
        {
            throw std::runtime_error("Duplicate or misplaced scene header.");
        }
        std::uint32_t version = 0;
        if (!tokens.Read(version))
        {
            throw std::runtime_error("Malformed scene version.");
        }
        if (!tokens.Rest().empty())
        {
            throw std::runtime_error("Trailing scene version data.");
        }
        if (version >= 1 && version < kSceneFormatVersion)
        {
            throw WholeFileFault("Scene format version " + std::to_string(version) +
                                 " is a legacy format the engine no longer reads. Convert it to version 6 " +
                                 kConvertHint + QuotePath(path_));
        }
        if (version != kSceneFormatVersion)
        {
            throw WholeFileFault("Unsupported scene format version.");
        }
        headerSeen_ = true;
    }

    void ReadRecord(std::string_view line, std::string_view word)
    {
        if (line.size() > Reflection::kMaxLineSize)
        {
            throw std::runtime_error("Schema header exceeds the record limit.");
        }
        const auto headerLine = static_cast<std::uint32_t>(lineNumber_);
        const std::uint64_t start = lineStart_;
        const auto wordEnd = static_cast<std::size_t>(word.data() + word.size() - line.data());
        if (inEntity_)
        {
            const Reflection::ReadText read = sink_.TakeRecordText(line.substr(wordEnd), source_.Buffered());
            if (read.bytes > 0)
            {
                source_.SkipBuffered(read.bytes);
                lineNumber_ += read.lines;
                return;
            }
        }
        Reflection::SchemaRecord record =
            Reflection::ReadSchemaRecord(line.substr(wordEnd), source_, lineNumber_, sink_.Arena(), true);
        if (record.name == "EnvironmentSettings")
        {
            if (inEntity_)
            {
                throw std::runtime_error("Environment schema must be outside entities.");
            }
            if (environmentSeen_)
            {
                throw std::runtime_error("Duplicate or mixed environment records.");
            }
            environmentSeen_ = true;
            return sink_.TakeEnvironment(record);
        }
        if (!inEntity_)
        {
            throw std::runtime_error("Component schema requires an entity.");
        }
        StagedRecord staged{record, source_.Position() - start, headerLine};
        sink_.TakeRecord(staged);
    }

    void ReadEntity(Core::TokenReader& tokens)
    {
        if (inEntity_)
        {
            throw std::runtime_error("Missing entity terminator.");
        }
        if (!tokens.Read(guidText_).Read(entity_.name))
        {
            throw std::runtime_error("Malformed entity header.");
        }
        const std::optional<Core::Guid> guid = Core::Guid::TryParse(guidText_);
        if (!guid || !guid->IsValid())
        {
            throw std::runtime_error("Malformed or null entity GUID.");
        }
        if (!tokens.Rest().empty())
        {
            throw std::runtime_error("Trailing entity header data.");
        }
        entity_.guid = *guid;
        entity_.parentGuid = {};
        entity_.hasParent = false;
        entity_.line = static_cast<std::uint32_t>(lineNumber_);
        inEntity_ = true;
    }

    void ReadParent(Core::TokenReader& tokens)
    {
        if (!inEntity_)
        {
            throw std::runtime_error("Parent record outside an entity.");
        }
        if (entity_.hasParent)
        {
            throw std::runtime_error("Duplicate parent record.");
        }
        entity_.hasParent = true;
        const bool present = static_cast<bool>(tokens.Read(guidText_));
        if (present && !guidText_.empty())
        {
            entity_.parentGuid = Core::Guid::TryParse(guidText_).value_or(Core::Guid());
        }
        if (!present || (!guidText_.empty() && !entity_.parentGuid.IsValid()))
        {
            throw std::runtime_error("Malformed parent GUID.");
        }
        if (!tokens.Rest().empty())
        {
            throw std::runtime_error("Trailing parent data.");
        }
    }

    void EndEntity()
    {
        if (!inEntity_)
        {
            throw std::runtime_error("Entity terminator outside an entity.");
        }
        inEntity_ = false;
        sink_.TakeEntity(entity_);
    }

    Core::LineReader& source_;
    SceneSink& sink_;
    const std::filesystem::path& path_;
    bool keepsLines_;
    StagedEntity entity_; // the open frame
    std::string guidText_;
    std::uint64_t lineNumber_ = 0;
    std::uint64_t lineStart_ = 0;
    bool headerSeen_ = false;
    bool environmentSeen_ = false;
    bool inEntity_ = false;
};

/// Keeps everything.
class StageSink final : public SceneSink
{
public:
    explicit StageSink(SceneStage& stage) : stage_(stage) {}

    bool KeepsRecords() const override { return true; }
    Reflection::SchemaArena& Arena() override { return stage_.arena; }
    void TakeEnvironment(Reflection::SchemaRecord& record) override { stage_.environment = record; }
    void TakeRecord(StagedRecord& record) override { records_.push_back(record); }
    void TakeEntity(StagedEntity& entity) override
    {
        stage_.entities.push_back(std::move(entity));
        stage_.entities.back().records = std::move(records_);
        records_.clear();
    }

private:
    SceneStage& stage_;
    std::vector<StagedRecord> records_; // of the open frame
};

} // namespace

bool ReadSceneText(Core::LineReader& source, SceneSink& sink, const std::filesystem::path& path,
                   std::string& error)
{
    SceneTextReader reader(source, sink, path);
    try
    {
        reader.Read();
        return true;
    }
    catch (const WholeFileFault& fault)
    {
        error = fault.what();
    }
    catch (const std::exception& fault)
    {
        error =
            "Failed to parse scene file at line " + std::to_string(reader.LineNumber()) + ": " + fault.what();
    }
    return false;
}

bool ParseSceneText(Core::LineReader& source, SceneStage& stage, const std::filesystem::path& path,
                    std::string& error)
{
    StageSink sink(stage);
    const bool parsed = ReadSceneText(source, sink, path, error);
    stage.version = parsed ? kSceneFormatVersion : 0;
    return parsed;
}

} // namespace Vornu::Scene
