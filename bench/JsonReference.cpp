#include "bench/JsonReference.h"

#include "bench/JsonConversion.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <fstream>
#include <stdexcept>

namespace Vornu::Bench
{
namespace
{

struct RapidDom
{
    using Value = const rapidjson::Value&;

    static const rapidjson::Value* FindMember(Value object, const char* name)
    {
        const auto found = object.FindMember(name);
        return found != object.MemberEnd() ? &found->value : nullptr;
    }
    static Value Member(Value object, const char* name)
    {
        const rapidjson::Value* const found = FindMember(object, name);
        if (found == nullptr)
        {
            throw std::runtime_error("a member is missing");
        }
        return *found;
    }
    static float Float(Value value) { return value.GetFloat(); }
    static bool Bool(Value value) { return value.GetBool(); }
    static std::int32_t Int(Value value) { return value.GetInt(); }
    static std::uint32_t UInt(Value value) { return value.GetUint(); }
    static std::string_view Text(Value value) { return {value.GetString(), value.GetStringLength()}; }
    static std::array<float, 3> Floats(Value list)
    {
        return {list[0].GetFloat(), list[1].GetFloat(), list[2].GetFloat()};
    }
    static std::size_t Size(Value list) { return list.Size(); }

    template<class Visit>
    static void ForEach(Value list, Visit visit)
    {
        for (Value value : list.GetArray())
        {
            visit(value);
        }
    }
};

} // namespace

std::size_t RoundTripJson(const std::filesystem::path& source, const std::filesystem::path& target)
{
    std::string text(std::filesystem::file_size(source), '\0');
    std::ifstream(source, std::ios::binary).read(text.data(), static_cast<std::streamsize>(text.size()));
    rapidjson::Document document;
    document.Parse(text.data(), text.size());
    if (document.HasParseError())
    {
        throw std::runtime_error("the JSON doesn't parse");
    }
    const std::vector<JsonEntity> entities = JsonConverter<RapidDom>().Convert(document);
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    document.Accept(writer);
    std::ofstream(target, std::ios::binary)
        .write(buffer.GetString(), static_cast<std::streamsize>(buffer.GetSize()));
    return entities.size();
}

} // namespace Vornu::Bench
