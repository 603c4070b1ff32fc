#pragma once

#include "engine/core/Guid.h"

#include <glm/gtc/quaternion.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace Vornu::Scene
{

enum class ScriptFieldType : std::uint8_t
{
    Bool = 0,
    Int32 = 1,
    UInt32 = 2,
    Int64 = 3,
    Float = 4,
    Double = 5,
    String = 6,
    Vector2 = 7,
    Vector3 = 8,
    Vector4 = 9,
    Quaternion = 10,
    Color = 11,
    EntityReference = 12,
    AssetReference = 13,
    Enum = 14,
};

/// The value of a script's field. A GUID for an entity, text for an asset and for text, whole numbers for an
/// enum.
using ScriptValue = std::variant<bool, std::int32_t, std::uint32_t, std::int64_t, float, double, std::string,
                                 glm::vec2, glm::vec3, glm::vec4, glm::quat, Core::Guid>;

struct ScriptField
{
    Core::Guid fieldId;
    std::string fieldName;
    ScriptFieldType type = ScriptFieldType::Float; // which says what `value` holds
    ScriptValue value = 0.0f;
};

/// What both forms of an attachment hold.
struct ScriptDescription
{
    Core::Guid attachmentId;
    Core::Guid typeId;
    std::string assemblyName;
    std::string namespaceName;
    std::string className;
    bool enabled = true;
    std::int32_t executionOrder = 0;
    bool missingScript = false; // the class wasn't found

    friend bool operator==(const ScriptDescription&, const ScriptDescription&) = default;
};

struct ScriptAttachment : ScriptDescription
{
    std::vector<ScriptField> serializedFields;
    std::vector<ScriptField> unknownFields; // no longer declared by the class
};

/// Scripts of an entity. They run elsewhere; what they hold survives here whether they are found or not.
struct ScriptComponent
{
    std::vector<ScriptAttachment> scripts;
};

// The stored forms.

struct ScriptFieldRecord
{
    Core::Guid fieldId;
    std::string fieldName;
    ScriptFieldType type = ScriptFieldType::Float;
    std::string value = "0";

    friend bool operator==(const ScriptFieldRecord&, const ScriptFieldRecord&) = default;
};

struct ScriptAttachmentRecord : ScriptDescription
{
    std::vector<ScriptFieldRecord> serializedFields;
    std::vector<ScriptFieldRecord> unknownFields;

    friend bool operator==(const ScriptAttachmentRecord&, const ScriptAttachmentRecord&) = default;
};

struct ScriptComponentRecord
{
    std::vector<ScriptAttachmentRecord> scripts;
};

} // namespace Vornu::Scene
