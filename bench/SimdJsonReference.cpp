#include "bench/JsonConversion.h"
#include "bench/JsonReference.h"

#include <simdjson.h>

#include <optional>

namespace Vornu::Bench
{
namespace
{

/// Faults throw `simdjson::simdjson_error`.
struct SimdDom
{
    using Value = simdjson::dom::element;

    static std::optional<Value> FindMember(Value object, const char* name)
    {
        Value found;
        return object[name].get(found) == simdjson::SUCCESS ? std::optional(found) : std::nullopt;
    }
    static Value Member(Value object, const char* name) { return object[name]; }
    static float Float(Value value) { return static_cast<float>(double(value)); }
    static bool Bool(Value value) { return value; }
    static std::int32_t Int(Value value) { return static_cast<std::int32_t>(std::int64_t(value)); }
    static std::uint32_t UInt(Value value) { return static_cast<std::uint32_t>(std::uint64_t(value)); }
    static std::string_view Text(Value value) { return value; }
    static std::array<float, 3> Floats(Value list)
    {
        auto next = simdjson::dom::array(list).begin();
        std::array<float, 3> floats;
        for (float& value : floats)
        {
            value = Float(*next);
            ++next;
        }
        return floats;
    }
    static std::size_t Size(Value list) { return simdjson::dom::array(list).size(); }

    template<class Visit>
    static void ForEach(Value list, Visit visit)
    {
        for (const Value value : simdjson::dom::array(list))
        {
            visit(value);
        }
    }
};

} // namespace

std::size_t LoadJson(const std::filesystem::path& source)
{
    simdjson::dom::parser parser;
    const simdjson::dom::element document = parser.load(source.native());
    return JsonConverter<SimdDom>().Convert(document).size();
}

} // namespace Vornu::Bench
