#pragma once

#include "engine/assets/identity/AssetId.h"
#include "engine/core/Guid.h"
#include "engine/core/text/TokenReader.h"

#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

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

/// Marks an unsigned field that is the number of an enum's value, of which none is above `last`; a greater
/// number counts as that.
template<class Enum>
struct CutField
{
    Enum& value;
    Enum last;
};
template<class Enum>
CutField(Enum&, Enum) -> CutField<Enum>;

/// The same for a signed field; a negative number counts as 0.
template<class Enum>
struct ClampedField
{
    Enum& value;
    Enum last;
};
template<class Enum>
ClampedField(Enum&, Enum) -> ClampedField<Enum>;

/// Stands for a field of the type that is read and dropped.
template<class Value>
struct Dropped
{
};

/// The fields of one positional record, read in file order. All records share its lenient rules: what the
/// line doesn't reach keeps its value, and a token that starts no number stops the record with that field at
/// 0.
///
/// A line is a small value: keep a copy to come back to a position and its state.
class RecordLine
{
public:
    RecordLine(const Core::TokenReader& tokens, const Assets::AssetRegistry& assets) noexcept
        : tokens_(tokens), assets_(&assets)
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

    /// Reads plain values that count only together. On false the line and the values are as they were.
    template<class... Values>
    bool ReadTogether(Values&... values)
    {
        RecordLine attempt = *this;
        std::tuple<Values...> read(values...);
        if (!std::apply([&](auto&... copies) -> RecordLine& { return attempt.Read(copies...); }, read))
        {
            return false;
        }
        std::tie(values...) = std::move(read);
        *this = attempt;
        return true;
    }

    /// Lets the next field be tried after one that could not be read.
    void ClearFailure() noexcept { tokens_.ClearFailure(); }

    /// The next word; empty at the end of the line.
    std::string_view ReadWord() { return tokens_.ReadWord(); }

    /// What stands behind the white space at the present position.
    std::string_view Rest() const noexcept { return tokens_.Rest(); }

private:
    template<class Field>
    requires requires(Core::TokenReader& tokens, Field& field) { tokens.Read(field); }
    void ReadField(Field& field) { tokens_.Read(field); }
    void ReadField(glm::vec2& field) { tokens_.Read(field.x).Read(field.y); }
    void ReadField(glm::vec3& field) { tokens_.Read(field.x).Read(field.y).Read(field.z); }
    void ReadField(glm::vec4& field) { tokens_.Read(field.x).Read(field.y).Read(field.z).Read(field.w); }
    void ReadField(const AssetField& field);
    void ReadField(const GuidField& field);

    template<class Enum>
    void ReadField(const CutField<Enum>& field)
    {
        auto number = static_cast<std::uint32_t>(field.value);
        tokens_.Read(number);
        field.value = static_cast<Enum>(std::min(number, static_cast<std::uint32_t>(field.last)));
    }
    template<class Enum>
    void ReadField(const ClampedField<Enum>& field)
    {
        auto number = static_cast<std::int32_t>(field.value);
        tokens_.Read(number);
        field.value = static_cast<Enum>(std::clamp(number, 0, static_cast<std::int32_t>(field.last)));
    }
    template<class Value>
    void ReadField(const Dropped<Value>&)
    {
        Value value{};
        ReadField(value);
    }

    Core::TokenReader tokens_;
    const Assets::AssetRegistry* assets_;
};

} // namespace Vornu::Scene::Legacy
