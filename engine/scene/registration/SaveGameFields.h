#pragma once

#include "engine/core/Guid.h"
#include "engine/core/files/ByteStream.h"
#include "engine/scene/entities/Entity.h"

#include <glm/vec3.hpp>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

/// The run-time state of components that a saved game keeps, and the fields that a game sends over a network.
/// Both are registered beside the reflected properties and don't depend on them.
namespace Vornu::Scene
{

class Registry;

struct SaveGameFieldCodecContext
{
    /// Whose entities a link refers to; null: every link is empty.
    const Registry* registry = nullptr;
};

/// Stored state of one component: little-endian bytes for each field.
struct SaveGameFieldSet
{
    std::uint32_t version = 0;
    std::vector<std::pair<std::string, std::vector<std::byte>>> fields; // in the order of their capture
};

inline constexpr std::uint32_t kMaxSaveGameString = 0x1000000; // bytes

// The binary forms: a bool as one byte, a float by its bits, a vector as three floats, a string behind its
// 32-bit length, an entity as the two words of its GUID. The reads throw `std::runtime_error`.
void WriteSaveGameValue(Core::ByteWriter& writer, bool value);
void WriteSaveGameValue(Core::ByteWriter& writer, float value);
void WriteSaveGameValue(Core::ByteWriter& writer, const glm::vec3& value);
void WriteSaveGameValue(Core::ByteWriter& writer, const std::string& value);
void WriteSaveGameEntity(Core::ByteWriter& writer, Entity entity, const SaveGameFieldCodecContext& context);
void ReadSaveGameValue(Core::ByteReader& reader, bool& value);
void ReadSaveGameValue(Core::ByteReader& reader, float& value);
void ReadSaveGameValue(Core::ByteReader& reader, glm::vec3& value);
void ReadSaveGameValue(Core::ByteReader& reader, std::string& value);
void ReadSaveGameEntity(Core::ByteReader& reader, Entity& entity, const SaveGameFieldCodecContext& context);

struct SaveGameField
{
    std::string name;
    std::function<void(const void* component, Core::ByteWriter& writer,
                       const SaveGameFieldCodecContext& context)>
        write;
    std::function<void(void* component, Core::ByteReader& reader, const SaveGameFieldCodecContext& context)>
        read;
};

/// How to capture and apply the run-time state of one component type.
struct ComponentSaveGameFields
{
    std::uint32_t version = 1;
    std::vector<SaveGameField> fields;
    /// Brings a set of an older version up to date; may be empty.
    std::function<void(SaveGameFieldSet& set, std::uint32_t fromVersion)> migrate;
    /// Runs `applyAll` on a copy of the component and takes the copy over when that returns.
    std::function<void(void* component, const std::function<void(void*)>& applyAll)> applyWrapper;

    SaveGameFieldSet Capture(const void* component, const SaveGameFieldCodecContext& context) const;

    /// Writes the stored fields into the component, all of them or, when it throws `std::runtime_error`,
    /// none. Members that the set doesn't mention stay. Names that this build doesn't know are appended to
    /// `unknown`, where given.
    void Apply(void* component, const SaveGameFieldSet& set, const SaveGameFieldCodecContext& context,
               std::vector<std::string>* unknown = nullptr) const;

    /// Brings a set of an older version up to date. Throws `std::runtime_error` for a version that this build
    /// doesn't read.
    void BringUpToDate(SaveGameFieldSet& set, const std::string& typeName) const;
};

/// How a replicated field is sent. The flags other than `quantized` are for the network layer of a game.
struct ReplicatedFieldSettings
{
    bool quantized = false; // as a multiple of `step`
    bool reliable = false;
    float step = 0.0f;
    float minimum = 0.0f; // of a quantized value; both 0 for no bounds
    float maximum = 0.0f;
    bool ownerOnly = false;
    bool interpolated = false;
    bool wrapsAround = false; // an angle: the short way round

    ReplicatedFieldSettings& Quantized(float stepSize, float lowest, float highest)
    {
        quantized = true;
        step = stepSize;
        minimum = lowest;
        maximum = highest;
        return *this;
    }
};

struct ReplicatedField
{
    std::string path; // dotted property names from the component, such as `transform.position`
    ReplicatedFieldSettings settings;
};

} // namespace Vornu::Scene
