#include "engine/reflection/SchemaText.h"

#include "engine/reflection/SchemaCodec.h"
#include "tests/core/Failure.h"

#include <gtest/gtest.h>

#include <glm/gtc/quaternion.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <limits>
#include <string>

namespace Vornu::Reflection
{
namespace
{

using Test::FailureOf;
using namespace std::string_literals;

/// The token in angle brackets and what stands behind it, or the fault.
std::string ReadToken(const std::string& line)
{
    std::string result;
    const std::string fault = FailureOf(
        [&]
        {
            SchemaArena arena;
            SchemaLine tokens(line);
            const std::string_view token = tokens.ReadQuoted(arena);
            result.append("<").append(token).append(">").append(tokens.Remaining());
        });
    return fault == "none" ? result : fault;
}

TEST(SchemaText, QuotedTokensResolveTheirEscapes)
{
    const std::pair<std::string, std::string> rows[] = {
        {R"("plain" rest)", "<plain> rest"},
        {" \t\v\f\r\"\"x", "<>x"},
        {R"("a\tb\n\r\"\\" 1)", "<a\tb\n\r\"\\> 1"},
        {R"("\0")", "<\0>"s},
        {"\"raw\ttab \xFF\x80\"", "<raw\ttab \xFF\x80>"},
        {R"("x\\")", "<x\\>"},
        {"", "Malformed quoted schema token."},
        {"  ", "Malformed quoted schema token."},
        {"word\"\"", "Malformed quoted schema token."},
        {R"("\x")", "Unknown schema escape."},
        {R"("\N")", "Unknown schema escape."},
        {R"("a\)", "Incomplete schema escape."},
        {R"("a\")", "Unterminated schema token."},
        {"\"abc", "Unterminated schema token."},
        {"\"", "Unterminated schema token."},
        {"\"a\rb\"", "Unescaped control character in schema token."},
        {"\"a\nb\"", "Unescaped control character in schema token."},
        {"\"a\0b\""s, "Unescaped control character in schema token."},
        {"\"\\ta\rb\"", "Unescaped control character in schema token."},
    };
    for (const auto& [line, expected] : rows)
    {
        EXPECT_EQ(ReadToken(line), expected) << line;
    }
}

/// The text that is written back for a parsed one, or the fault.
template<class Value>
std::string Leaf(PropertyKind kind, const std::string& text)
{
    Value value{};
    SchemaArena arena;
    std::string result;
    const std::string fault = FailureOf(
        [&]
        {
            ParseLeaf(kind, text, ViewOf(value));
            result = FormatLeaf(kind, ViewOf(std::as_const(value)), arena);
        });
    return fault == "none" ? result : fault;
}

template<class Value>
void ExpectFault(PropertyKind kind, const std::string& fault, const std::vector<std::string>& texts)
{
    for (const std::string& text : texts)
    {
        EXPECT_EQ(Leaf<Value>(kind, text), fault) << static_cast<int>(kind) << " <" << text << ">";
    }
}

constexpr char kNumber[] = "Invalid or out-of-range numeric value.";
constexpr char kMissing[] = "Missing vector component.";
constexpr char kTrailing[] = "Unexpected trailing schema data.";
using enum PropertyKind;

TEST(SchemaText, IntegerLeaves)
{
    EXPECT_EQ(Leaf<bool>(Bool, "0") + Leaf<bool>(Bool, "1"), "01");
    ExpectFault<bool>(Bool, "Boolean schema value must be 0 or 1.", {"", "true", "01", "1 ", " 1", "2"});
    for (const char* const text : {"0", "2147483647", "-2147483648"})
    {
        EXPECT_EQ(Leaf<std::int32_t>(Int32, text), text);
    }
    EXPECT_EQ(Leaf<std::int32_t>(Int32, "-007"), "-7");
    ExpectFault<std::int32_t>(Int32, kNumber,
                              {"2147483648", "-2147483649", "", "-", "+1", " 1", "1 ", "0x1", "1.0"});
    EXPECT_EQ(Leaf<std::uint32_t>(UInt32, "04294967295"), "4294967295");
    ExpectFault<std::uint32_t>(UInt32, kNumber, {"4294967296", "-1", "-0"});
    EXPECT_EQ(Leaf<std::uint64_t>(UInt64, "18446744073709551615"), "18446744073709551615");
    ExpectFault<std::uint64_t>(UInt64, kNumber, {"18446744073709551616", "-1"});
}

TEST(SchemaText, FloatLeaves)
{
    const std::pair<const char*, const char*> rows[] = {
        {"1.", "1"},
        {".5", "0.5"},
        {"1E3", "1000"},
        {"1e9", "1e+09"},
        {"25", "25"},
        {"0.1", "0.100000001"},
        {"0.05", "0.0500000007"},
        {"0.0001", "9.99999975e-05"},
        {"-0", "-0"},
        {"0e-999", "0"},
        {"1e-45", "1.40129846e-45"},
        {"3.4028235e38", "3.40282347e+38"},
    };
    for (const auto& [text, expected] : rows)
    {
        EXPECT_EQ(Leaf<float>(Float, text), expected);
    }
    ExpectFault<float>(Float, kNumber,
                       {"3.4028236e38", "1e39", "-1e39", "1e-46", "1e-50", "", ".", "-", "+1", " 1", "1 ",
                        "1e", "1,5", "0x1p3"});
    ExpectFault<float>(Float, "Non-finite numeric value.", {"inf", "-Infinity", "nan"});
}

TEST(SchemaText, VectorLeaves)
{
    EXPECT_EQ(Leaf<glm::vec2>(Vec2, "1 -2.5"), "1 -2.5");
    EXPECT_EQ(Leaf<glm::vec3>(Vec3, "\t1\v2\f\r\n3 "), "1 2 3");
    EXPECT_EQ(Leaf<glm::vec4>(Vec4, "1 2 3 4"), "1 2 3 4");
    EXPECT_EQ(Leaf<glm::quat>(Quat, "1 2 3 4"), "1 2 3 4");
    ExpectFault<glm::vec2>(Vec2, kMissing, {"", " ", "1"});
    ExpectFault<glm::vec3>(Vec3, kMissing, {"1 2"});
    ExpectFault<glm::quat>(Quat, kMissing, {"1 2 3"});
    ExpectFault<glm::vec3>(Vec3, kTrailing, {"1 2 3 4", "1 2 3 x"});
    ExpectFault<glm::vec4>(Vec4, kTrailing, {"1 2 3 4 5"});
    ExpectFault<glm::vec3>(Vec3, kNumber, {"1 2 3\0"s, "1 +2 3", "1,2,3"});
    ExpectFault<glm::vec3>(Vec3, "Non-finite numeric value.", {"1 2 inf"});

    glm::quat quat{};
    ParseLeaf(Quat, "1 2 3 4", ViewOf(quat));
    EXPECT_EQ(quat.w, 1.0f);
    EXPECT_EQ(quat.x, 2.0f);
}

TEST(SchemaText, TextAndGuidLeaves)
{
    const std::string guid = "6f1c2a90-3b7d-4e21-9c55-0d2f7a1b8e34";
    EXPECT_EQ(Leaf<std::string>(String, "a\0\n\"\\\xFF"s), "a\0\n\"\\\xFF"s);
    EXPECT_EQ(Leaf<Core::Guid>(PropertyKind::Guid, ""), "");
    EXPECT_EQ(Leaf<Core::Guid>(PropertyKind::Guid, "6F1C2A903B7D4E219C550D2F7A1B8E34"), guid);
    EXPECT_EQ(Leaf<Core::Guid>(PropertyKind::Guid, guid), guid);
    EXPECT_EQ(Leaf<Core::Guid>(PropertyKind::Guid, guid + " "), "Invalid stable GUID length.");
}

TEST(SchemaText, LeavesRefuseForeignStorageAndKinds)
{
    SchemaArena arena;
    std::int32_t number = 7;
    const ObjectView view = ViewOf(number);
    const ObjectView readOnly = ViewOf(std::as_const(number));
    ObjectView empty = view;
    empty.constData = nullptr;
    constexpr char kStorage[] = "Schema accessor rejected value storage.";
    EXPECT_EQ(FailureOf([&] { FormatLeaf(UInt32, view, arena); }), kStorage);
    EXPECT_EQ(FailureOf([&] { FormatLeaf(Int32, empty, arena); }), kStorage);
    EXPECT_EQ(FailureOf([&] { ParseLeaf(Float, "1", view); }), kStorage);
    EXPECT_EQ(FailureOf([&] { ParseLeaf(Int32, "1", readOnly); }), kStorage);
    EXPECT_EQ(number, 7);

    for (const PropertyKind kind : {Custom, Object, EntityLinkRef, static_cast<PropertyKind>(200)})
    {
        EXPECT_EQ(FailureOf([&] { FormatLeaf(kind, view, arena); }), "Unsupported schema leaf kind.");
        EXPECT_EQ(FailureOf([&] { ParseLeaf(kind, "1", view); }), "Unsupported schema leaf kind.");
    }
    using Limits = std::numeric_limits<float>;
    for (const float bad : {Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN()})
    {
        const glm::vec3 vector{0, 0, bad};
        EXPECT_EQ(FailureOf([&] { FormatLeaf(Vec3, ViewOf(vector), arena); }),
                  "Cannot save a non-finite schema value.");
    }
}

} // namespace
} // namespace Vornu::Reflection
