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

struct LeafRow
{
    std::string text;
    std::string expected; // the text that is written back, or the fault
};

template<class Value>
void ExpectLeaves(PropertyKind kind, const std::vector<LeafRow>& rows)
{
    for (const LeafRow& row : rows)
    {
        Value value{};
        SchemaArena arena;
        std::string result;
        const std::string fault = FailureOf(
            [&]
            {
                ParseLeaf(kind, row.text, ViewOf(value));
                result = FormatLeaf(kind, ViewOf(std::as_const(value)), arena);
            });
        EXPECT_EQ(fault == "none" ? result : fault, row.expected)
            << "kind " << static_cast<int>(kind) << " <" << row.text << ">";
    }
}

constexpr char kNumber[] = "Invalid or out-of-range numeric value.";
constexpr char kNonFinite[] = "Non-finite numeric value.";
constexpr char kBool[] = "Boolean schema value must be 0 or 1.";
constexpr char kMissing[] = "Missing vector component.";
constexpr char kTrailing[] = "Unexpected trailing schema data.";

TEST(SchemaText, IntegerLeaves)
{
    ExpectLeaves<bool>(PropertyKind::Bool, {{"0", "0"},
                                            {"1", "1"},
                                            {"", kBool},
                                            {"true", kBool},
                                            {"01", kBool},
                                            {"1 ", kBool},
                                            {" 1", kBool},
                                            {"2", kBool}});
    ExpectLeaves<std::int32_t>(PropertyKind::Int32, {{"2147483647", "2147483647"},
                                                     {"-2147483648", "-2147483648"},
                                                     {"2147483648", kNumber},
                                                     {"-2147483649", kNumber},
                                                     {"-007", "-7"},
                                                     {"-0", "0"},
                                                     {"", kNumber},
                                                     {"-", kNumber},
                                                     {"+1", kNumber},
                                                     {" 1", kNumber},
                                                     {"1 ", kNumber},
                                                     {"0x1", kNumber},
                                                     {"1.0", kNumber}});
    ExpectLeaves<std::uint32_t>(PropertyKind::UInt32, {{"4294967295", "4294967295"},
                                                       {"4294967296", kNumber},
                                                       {"-1", kNumber},
                                                       {"-0", kNumber},
                                                       {"0042", "42"}});
    ExpectLeaves<std::uint64_t>(PropertyKind::UInt64, {{"18446744073709551615", "18446744073709551615"},
                                                       {"18446744073709551616", kNumber}});
}

TEST(SchemaText, FloatLeaves)
{
    ExpectLeaves<float>(PropertyKind::Float, {{"1.", "1"},
                                              {".5", "0.5"},
                                              {"-.5", "-0.5"},
                                              {"1E3", "1000"},
                                              {"1e9", "1e+09"},
                                              {"123456789", "123456792"},
                                              {"0.1", "0.100000001"},
                                              {"0.05", "0.0500000007"},
                                              {"0.0001", "9.99999975e-05"},
                                              {"25", "25"},
                                              {"-0", "-0"},
                                              {"0e-999", "0"},
                                              {"1e-45", "1.40129846e-45"},
                                              {"3.4028235e38", "3.40282347e+38"},
                                              {"3.4028236e38", kNumber},
                                              {"1e39", kNumber},
                                              {"-1e39", kNumber},
                                              {"1e-46", kNumber},
                                              {"1e-50", kNumber},
                                              {"inf", kNonFinite},
                                              {"-Infinity", kNonFinite},
                                              {"nan", kNonFinite},
                                              {"", kNumber},
                                              {".", kNumber},
                                              {"-", kNumber},
                                              {"+1", kNumber},
                                              {" 1", kNumber},
                                              {"1 ", kNumber},
                                              {"1e", kNumber},
                                              {"1,5", kNumber},
                                              {"0x1p3", kNumber}});
}

TEST(SchemaText, VectorLeaves)
{
    ExpectLeaves<glm::vec2>(PropertyKind::Vec2,
                            {{"1 -2.5", "1 -2.5"}, {"", kMissing}, {"1", kMissing}, {"1 2 3", kTrailing}});
    ExpectLeaves<glm::vec3>(PropertyKind::Vec3, {{"\t1\v2\f\r\n3 ", "1 2 3"},
                                                 {"1 2", kMissing},
                                                 {"1 2 3 4", kTrailing},
                                                 {"1 2 3\0"s, kNumber},
                                                 {"1 +2 3", kNumber},
                                                 {"1 2 inf", kNonFinite},
                                                 {"1,2,3", kNumber}});
    ExpectLeaves<glm::vec4>(PropertyKind::Vec4,
                            {{"1 2 3 4", "1 2 3 4"}, {"1 2 3", kMissing}, {"1 2 3 4 x", kTrailing}});
    ExpectLeaves<glm::quat>(PropertyKind::Quat,
                            {{"1 2 3 4", "1 2 3 4"}, {"1 2 3", kMissing}, {"1 2 3 4 5", kTrailing}});

    glm::quat quat{};
    ParseLeaf(PropertyKind::Quat, "1 2 3 4", ViewOf(quat));
    EXPECT_EQ(quat.w, 1.0f);
    EXPECT_EQ(quat.x, 2.0f);
    EXPECT_EQ(quat.z, 4.0f);
}

TEST(SchemaText, TextAndGuidLeaves)
{
    const std::string guid = "6f1c2a90-3b7d-4e21-9c55-0d2f7a1b8e34";
    ExpectLeaves<std::string>(PropertyKind::String, {{"", ""}, {"a\0\n\"\\\xFF"s, "a\0\n\"\\\xFF"s}});
    ExpectLeaves<Core::Guid>(PropertyKind::Guid,
                             {{"", ""},
                              {"00000000-0000-0000-0000-000000000000", ""},
                              {"6F1C2A903B7D4E219C550D2F7A1B8E34", guid},
                              {guid, guid},
                              {guid + " ", "Invalid stable GUID length."},
                              {"6f1c2a90+3b7d-4e21-9c55-0d2f7a1b8e34", "Invalid stable GUID separator."},
                              {"6f1c2a90-3b7d-4e21-9c55-0d2f7a1b8e3g", "Invalid stable GUID digit."}});
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
    EXPECT_EQ(FailureOf([&] { FormatLeaf(PropertyKind::UInt32, view, arena); }), kStorage);
    EXPECT_EQ(FailureOf([&] { FormatLeaf(PropertyKind::Int32, empty, arena); }), kStorage);
    EXPECT_EQ(FailureOf([&] { ParseLeaf(PropertyKind::Float, "1", view); }), kStorage);
    EXPECT_EQ(FailureOf([&] { ParseLeaf(PropertyKind::Int32, "1", readOnly); }), kStorage);
    EXPECT_EQ(number, 7);

    for (const PropertyKind kind : {PropertyKind::Custom, PropertyKind::Object, PropertyKind::EntityLinkRef,
                                    static_cast<PropertyKind>(200)})
    {
        EXPECT_EQ(FailureOf([&] { FormatLeaf(kind, view, arena); }), "Unsupported schema leaf kind.");
        EXPECT_EQ(FailureOf([&] { ParseLeaf(kind, "1", view); }), "Unsupported schema leaf kind.");
    }
    using Limits = std::numeric_limits<float>;
    for (const float bad : {Limits::infinity(), -Limits::infinity(), Limits::quiet_NaN()})
    {
        const glm::vec3 vector{0, 0, bad};
        EXPECT_EQ(FailureOf([&] { FormatLeaf(PropertyKind::Vec3, ViewOf(vector), arena); }),
                  "Cannot save a non-finite schema value.");
    }
}

TEST(SchemaText, FieldBudgetHasExactLimits)
{
    constexpr char kFault[] = "Schema exceeds the nesting or field budget.";
    FieldBudget budget;
    EXPECT_EQ(FailureOf([&] { budget.Charge(0, 16); }), "none");
    EXPECT_EQ(FailureOf([&] { budget.Charge(0, 17); }), kFault);
    EXPECT_EQ(FailureOf([&] { budget.Charge(1025, 1); }), kFault);
    // What was refused doesn't count.
    for (int i = 0; i < 4; ++i)
    {
        EXPECT_EQ(FailureOf([&] { budget.Charge(1024, 1); }), "none");
    }
    EXPECT_EQ(FailureOf([&] { budget.Charge(0, 1); }), "none");
    EXPECT_EQ(FailureOf([&] { budget.Charge(1, 1); }), kFault);
}

} // namespace
} // namespace Vornu::Reflection
