#pragma once

#include "engine/assets/AssetId.h"
#include "engine/core/Guid.h"
#include "engine/core/TokenReader.h"

#include <glm/vec3.hpp>

#include <string>
#include <string_view>

namespace Vornu::Assets
{
class AssetRegistry;
}

namespace Vornu::Scene::Legacy
{

/// Marks a field that is an asset reference: text that resolves to an id, and to 0 when unknown.
struct AssetField
{
    Assets::AssetId& id;
};

/// Marks a field that is the text of a GUID; text that doesn't parse gives the null one.
struct GuidField
{
    Core::Guid& guid;
};

/// The fields of one positional record, read in file order. All records share its lenient rules: what the
/// line doesn't reach keeps its value, and a token that starts no number stops the record with that field at
/// 0.
class RecordLine
{
public:
    RecordLine(const Core::TokenReader& tokens, const Assets::AssetRegistry& assets) noexcept
        : tokens_(tokens), assets_(assets)
    {
    }

    /// False once a field could not be read.
    explicit operator bool() const noexcept { return static_cast<bool>(tokens_); }

    template<class... Fields>
    RecordLine& Read(Fields&&... fields)
    {
        (ReadField(fields), ...);
        return *this;
    }

    /// The next word; empty at the end of the line.
    std::string_view ReadWord() { return tokens_.ReadWord(); }

    /// What stands behind the white space at the present position.
    std::string_view Rest() const noexcept { return tokens_.Rest(); }

private:
    template<class Field>
    requires requires(Core::TokenReader& tokens, Field& field) { tokens.Read(field); }
    void ReadField(Field& field) { tokens_.Read(field); }
    void ReadField(glm::vec3& field) { tokens_.Read(field.x).Read(field.y).Read(field.z); }
    void ReadField(const AssetField& field);
    void ReadField(const GuidField& field);

    Core::TokenReader tokens_;
    const Assets::AssetRegistry& assets_;
};

} // namespace Vornu::Scene::Legacy
