#include "engine/scene/files/CookedScene.h"

#include "engine/assets/cooked/CookedContainer.h"
#include "engine/core/files/ByteStream.h"
#include "engine/core/files/InputFile.h"
#include "engine/reflection/SchemaText.h"
#include "engine/scene/registration/EntityRecordStage.h"

#include <algorithm>
#include <new>
#include <stdexcept>
#include <string_view>

namespace Vornu::Scene
{
namespace
{

using Reflection::SchemaArray;
using Reflection::SchemaRecord;
using Reflection::SchemaValue;

constexpr std::string_view kEnvironmentName = "EnvironmentSettings";
constexpr std::uint32_t kMaxNameSize = 65'536;
constexpr std::uint32_t kMaxTextSize = 0x100000;
constexpr std::uint32_t kMaxEntities = 0x1000000;
constexpr std::uint32_t kMaxRecords = 65'536;
// The smallest that one of each can be, so that no count asks for memory that the data can't fill.
constexpr std::size_t kMinEntitySize = 41;
constexpr std::size_t kMinRecordSize = 20;
constexpr std::size_t kMinFieldSize = 5;
constexpr std::size_t kMinValueSize = 1;

// Writing
// -----------------------------------------------------------------------------------------------------

/// What a reader would refuse is not written.
void WriteCount(Core::ByteWriter& out, std::size_t count, std::uint32_t limit)
{
    if (count > limit)
    {
        throw std::runtime_error("Cooked item count exceeds its limit.");
    }
    out.WriteU32(static_cast<std::uint32_t>(count));
}

void WriteText(Core::ByteWriter& out, std::string_view text, std::uint32_t limit)
{
    if (text.size() > limit)
    {
        throw std::runtime_error("Cooked string exceeds its limit.");
    }
    out.WriteString(text);
}

void WriteGuid(Core::ByteWriter& out, const Core::Guid& guid)
{
    out.WriteU64(guid.high);
    out.WriteU64(guid.low);
}

void WriteRecord(Core::ByteWriter& out, const SchemaRecord& record);

void WriteValue(Core::ByteWriter& out, const SchemaValue& value)
{
    out.WriteU8(static_cast<std::uint8_t>(value.GetType()));
    switch (value.GetType())
    {
    case SchemaValue::Type::Text:
        WriteText(out, value.Text(), kMaxTextSize);
        break;
    case SchemaValue::Type::Record:
        WriteRecord(out, value.Record());
        break;
    case SchemaValue::Type::Array:
        WriteCount(out, value.Array().Size(), Reflection::kMaxElements);
        for (const SchemaValue& element : value.Array())
        {
            WriteValue(out, element);
        }
        break;
    }
}

void WriteRecord(Core::ByteWriter& out, const SchemaRecord& record)
{
    WriteText(out, record.name, kMaxNameSize);
    out.WriteU32(record.version);
    WriteCount(out, record.Fields().size(), Reflection::kMaxFields);
    for (const Reflection::SchemaField& field : record.Fields())
    {
        WriteText(out, field.name, kMaxNameSize);
        WriteValue(out, field.value);
    }
}

void WriteEntity(Core::ByteWriter& out, const StagedEntity& entity)
{
    WriteGuid(out, entity.guid);
    WriteText(out, entity.name, kMaxNameSize);
    out.WriteU8(entity.hasParent ? 1 : 0);
    WriteGuid(out, entity.parentGuid);
    WriteCount(out, entity.records.size(), kMaxRecords);
    for (const StagedRecord& staged : entity.records)
    {
        out.WriteU64(staged.encodedBytes);
        WriteRecord(out, staged.record);
    }
}

// Reading
// -----------------------------------------------------------------------------------------------------

class PayloadReader
{
public:
    PayloadReader(std::span<const std::byte> payload, SceneStage& stage) : in_(payload), stage_(stage) {}

    void Read()
    {
        const std::uint32_t version = in_.ReadU32();
        if (version != kSceneFormatVersion)
        {
            throw std::runtime_error("Cooked scene holds scene version " + std::to_string(version) +
                                     "; recook the content.");
        }
        stage_.version = version;
        ReadEnvironment();
        const std::uint32_t count = in_.ReadCount(kMinEntitySize, kMaxEntities);
        stage_.entities.reserve(count);
        for (std::uint32_t i = 0; i < count; ++i)
        {
            ReadEntity(stage_.entities.emplace_back());
        }
        if (in_.Remaining() != 0)
        {
            throw std::runtime_error("Trailing data after the last entity.");
        }
    }

private:
    void ReadEnvironment()
    {
        const std::uint8_t flag = in_.ReadU8();
        if (flag > 1)
        {
            throw std::runtime_error("Malformed environment flag.");
        }
        if (flag == 1)
        {
            stage_.environment = ReadTopRecord();
            if (stage_.environment->name != kEnvironmentName)
            {
                throw std::runtime_error("Malformed environment record.");
            }
        }
    }

    void ReadEntity(StagedEntity& entity)
    {
        entity.guid = ReadGuid();
        if (!entity.guid.IsValid())
        {
            throw std::runtime_error("Null entity GUID.");
        }
        entity.name = in_.ReadString(kMaxNameSize);
        const std::uint8_t flag = in_.ReadU8();
        if (flag > 1)
        {
            throw std::runtime_error("Malformed parent flag.");
        }
        entity.hasParent = flag == 1;
        entity.parentGuid = ReadGuid();
        const std::uint32_t count = in_.ReadCount(kMinRecordSize, kMaxRecords);
        entity.records.reserve(count);
        for (std::uint32_t i = 0; i < count; ++i)
        {
            entity.records.push_back(ReadStagedRecord());
        }
    }

    StagedRecord ReadStagedRecord()
    {
        StagedRecord staged;
        staged.encodedBytes = in_.ReadU64();
        const std::size_t start = in_.Position();
        staged.record = ReadTopRecord();
        if (staged.record.name == kEnvironmentName)
        {
            throw std::runtime_error("Environment record inside an entity.");
        }
        // A payload can't understate what the limits of a component count.
        if (staged.encodedBytes != kUnknownEncodedBytes)
        {
            staged.encodedBytes = std::max<std::uint64_t>(staged.encodedBytes, in_.Position() - start);
        }
        return staged;
    }

    SchemaRecord ReadTopRecord()
    {
        recordStart_ = in_.Position();
        fieldSum_ = 0;
        SchemaRecord record = ReadRecord(0);
        CheckSize();
        return record;
    }

    SchemaRecord ReadRecord(std::uint32_t depth)
    {
        CheckDepth(depth);
        const std::string_view name = in_.ReadString(kMaxNameSize);
        if (name.empty())
        {
            throw std::runtime_error("Record without a type name.");
        }
        const std::uint32_t version = in_.ReadU32();
        if (version == 0)
        {
            throw std::runtime_error("Invalid component schema header.");
        }
        const std::uint32_t count = in_.ReadCount(kMinFieldSize, Reflection::kMaxFields);
        SchemaRecord record(stage_.arena, name, version, count);
        Reflection::FieldNameFilter names;
        for (std::uint32_t i = 0; i < count; ++i)
        {
            CountField();
            const std::string_view field = ReadFieldName(record, names);
            record.Append(field, ReadValue(depth));
        }
        return record;
    }

    std::string_view ReadFieldName(const SchemaRecord& record, Reflection::FieldNameFilter& names)
    {
        const std::string_view name = in_.ReadString(kMaxNameSize);
        if (name.empty() || (names.MayRepeat(name) && record.FindField(name) != nullptr))
        {
            throw std::runtime_error("Empty or duplicate schema field.");
        }
        return name;
    }

    SchemaValue ReadValue(std::uint32_t depth)
    {
        CheckSize();
        CheckDepth(depth);
        switch (in_.ReadU8())
        {
        case static_cast<std::uint8_t>(SchemaValue::Type::Text):
            return in_.ReadString(kMaxTextSize);
        case static_cast<std::uint8_t>(SchemaValue::Type::Record):
            return new (stage_.arena.Allocate<SchemaRecord>(1)) SchemaRecord(ReadRecord(depth + 1));
        case static_cast<std::uint8_t>(SchemaValue::Type::Array):
            return ReadArray(depth);
        default:
            throw std::runtime_error("Unknown record value tag.");
        }
    }

    SchemaValue ReadArray(std::uint32_t depth)
    {
        const SchemaArray array(stage_.arena, in_.ReadCount(kMinValueSize, Reflection::kMaxElements));
        for (SchemaValue& element : array)
        {
            CountField();
            element = ReadValue(depth + 1);
        }
        return array;
    }

    Core::Guid ReadGuid()
    {
        const std::uint64_t high = in_.ReadU64();
        return {high, in_.ReadU64()};
    }

    static void CheckDepth(std::uint32_t depth)
    {
        if (depth > Reflection::kMaxNesting)
        {
            throw std::runtime_error("Record nesting exceeds the schema depth limit.");
        }
    }

    void CountField()
    {
        if (++fieldSum_ > Reflection::kMaxFieldSum)
        {
            throw std::runtime_error("Record exceeds the total field limit.");
        }
    }

    void CheckSize() const
    {
        if (in_.Position() - recordStart_ > Reflection::kMaxRecordSize)
        {
            throw std::runtime_error("Record exceeds the schema size limit.");
        }
    }

    Core::ByteReader in_;
    SceneStage& stage_;
    std::size_t recordStart_ = 0;
    std::uint32_t fieldSum_ = 0;
};

} // namespace

bool CookScene(const std::filesystem::path& path, std::vector<std::byte>& bytes, std::string& error)
{
    Core::InputFile file(path);
    if (!file.IsOpen())
    {
        error = "Failed to open scene file for reading: " + path.native();
        return false;
    }
    try
    {
        SceneStage stage;
        const bool complete = file.ReadAll(stage.bytes);
        Core::LineReader lines(stage.bytes.View(), !complete);
        if (!ParseSceneText(lines, stage, path, error))
        {
            return false;
        }
        bytes = EncodeCookedScene(stage);
        return true;
    }
    catch (const std::exception& fault)
    {
        error = "Failed to encode cooked scene " + path.native() + ": " + fault.what();
        return false;
    }
}

std::vector<std::byte> EncodeCookedScene(const SceneStage& stage)
{
    Core::ByteWriter out;
    out.WriteU32(stage.version);
    out.WriteU8(stage.environment ? 1 : 0);
    if (stage.environment)
    {
        WriteRecord(out, *stage.environment);
    }
    WriteCount(out, stage.entities.size(), kMaxEntities);
    for (const StagedEntity& entity : stage.entities)
    {
        WriteEntity(out, entity);
    }
    return Assets::WrapContainer(Assets::ContainerKind(kCookedSceneKind), kCookedSceneFormat, out.Bytes());
}

bool DecodeCookedScene(std::span<const std::byte> bytes, SceneStage& stage, const std::filesystem::path& path,
                       std::string& error)
{
    const auto payload = Assets::OpenContainer(bytes, Assets::ContainerKind(kCookedSceneKind),
                                               kCookedSceneFormat, path.native(), &error);
    if (!payload)
    {
        return false;
    }
    try
    {
        PayloadReader(*payload, stage).Read();
        return true;
    }
    catch (const std::exception& fault)
    {
        error = "Invalid cooked scene " + path.native() + ": " + fault.what();
        return false;
    }
}

} // namespace Vornu::Scene
