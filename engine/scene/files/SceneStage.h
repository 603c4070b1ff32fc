#pragma once

#include "engine/core/Guid.h"
#include "engine/core/files/InputFile.h"
#include "engine/core/text/LineReader.h"
#include "engine/reflection/ObjectText.h"
#include "engine/reflection/SchemaRecord.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace Vornu::Scene
{

inline constexpr std::uint32_t kSceneFormatVersion = 6;

struct StagedRecord
{
    Reflection::SchemaRecord record;
    std::uint64_t encodedBytes = 0; // in the file, line ends included; all ones when the source can't tell
    std::uint32_t line = 0;         // of the header; 0 in a cooked scene
};

struct StagedEntity
{
    Core::Guid guid; // never null
    std::string name;
    Core::Guid parentGuid;  // null for none
    bool hasParent = false; // a `parent` line was seen
    std::uint32_t line = 0; // of the `entity` line; 0 in a cooked scene
    std::vector<StagedRecord> records;
};

/// What a scene file holds before any of it has become a component. Records are views into `bytes` and
/// `arena`.
struct SceneStage
{
    std::uint32_t version = 0; // 0 before the header was read
    std::optional<Reflection::SchemaRecord> environment;
    std::vector<StagedEntity> entities;

    Core::FileBytes bytes;
    Reflection::SchemaArena arena;
};

/// Takes what a scene file holds as it is read, in file order.
class SceneSink
{
public:
    virtual ~SceneSink() = default;

    /// Whether records outlive the call that gives them. If not, the lines that they are views into are let
    /// go.
    virtual bool KeepsRecords() const = 0;
    /// Where the records are made that come next. The sink may reset it whenever it has been given something.
    virtual Reflection::SchemaArena& Arena() = 0;
    virtual void TakeEnvironment(Reflection::SchemaRecord& record) = 0;
    /// A record of the entity whose frame comes next.
    virtual void TakeRecord(StagedRecord& record) = 0;
    /// Offers the text of a record: its first line behind the keyword, and what the reader has at hand of
    /// what follows. Gives how much of that it has taken, or nothing to be given the record itself.
    virtual Reflection::ReadText TakeRecordText(std::string_view, std::string_view) { return {}; }
    /// A frame without its records, at its end. What isn't moved out of it is reused for the next.
    virtual void TakeEntity(StagedEntity& entity) = 0;
};

/// Reads scene text of the current format from a text in memory, or from a file whose lines last until they
/// are released. `path` is for messages alone. On false `error` tells why; the sink may have been given what
/// stood before.
bool ReadSceneText(Core::LineReader& source, SceneSink& sink, const std::filesystem::path& path,
                   std::string& error);

/// Reads scene text in memory, which outlives the stage, into a stage. On false the stage is partly filled.
bool ParseSceneText(Core::LineReader& source, SceneStage& stage, const std::filesystem::path& path,
                    std::string& error);

} // namespace Vornu::Scene
