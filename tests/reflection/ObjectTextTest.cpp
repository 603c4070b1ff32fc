#include "engine/reflection/ObjectText.h"

#include "engine/reflection/SchemaCodec.h"
#include "engine/reflection/SchemaRecordList.h"
#include "engine/reflection/ValueBuilder.h"
#include "tests/reflection/RecordText.h"

#include <gtest/gtest.h>

#include <glm/gtc/quaternion.hpp>
#include <glm/vec2.hpp>
#include <glm/vec3.hpp>
#include <glm/vec4.hpp>

#include <algorithm>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace Vornu::Reflection
{
namespace
{

using Test::WriteRecord;

enum class Mode : std::int8_t
{
    Off = -1,
    On = 1,
};

struct Part
{
    std::string label = "x";
    glm::vec4 color{1};
    friend bool operator==(const Part&, const Part&) = default;
};

struct Everything
{
    bool flag = true;
    std::int32_t whole = -7;
    std::uint32_t count = 7;
    std::uint64_t large = ~std::uint64_t{0};
    float weight = 0.1f;
    std::string text = "plain";
    glm::vec2 pair{1, 2};
    glm::vec3 place{1, 2, 3};
    glm::quat turn{1, 0, 0, 0};
    Core::Guid guid;
    Mode mode = Mode::Off;
    std::uint64_t asset = 0;
    Part part;
    std::vector<Part> parts;
    std::vector<float> samples;
    std::vector<std::vector<bool>> bits;
    std::vector<std::uint64_t> assets;
    std::vector<Mode> modes;
    std::int32_t cache = 3;
    std::int32_t old = 4;
    friend bool operator==(const Everything&, const Everything&) = default;
};

struct Locked
{
    std::int32_t value = 0;
};
struct Handle
{
    std::uint32_t entity = 0;
};

const ReflectionRegistry& Types()
{
    static ReflectionRegistry registry;
    if (!registry.Types().empty())
    {
        return registry;
    }
    registry.AddAssetType("Mesh", 1);
    registry.RegisterEnum<Mode>("Mode", {{Mode::Off, "Off"}, {Mode::On, "On"}});
    ValueBuilder<Part>(registry, "Part", "", "").Field("label", &Part::label).Field("color", &Part::color);
    ValueBuilder<Everything>(registry, "Everything", "", "")
        .Field("flag", &Everything::flag)
        .Field("whole", &Everything::whole)
        .Field("count", &Everything::count)
        .Field("large", &Everything::large)
        .Field("weight", &Everything::weight)
        .Field("text", &Everything::text)
        .Field("pair", &Everything::pair)
        .Field("place", &Everything::place)
        .Field("turn", &Everything::turn)
        .Field("guid", &Everything::guid)
        .Field("mode", &Everything::mode)
        .Field("asset", &Everything::asset, FieldAttr().Asset("Mesh"))
        .Field("part", &Everything::part)
        .Field("parts", &Everything::parts)
        .Field("samples", &Everything::samples)
        .Field("bits", &Everything::bits)
        .Field("assets", &Everything::assets, FieldAttr().Asset("Mesh"))
        .Field("modes", &Everything::modes)
        .Field("cache", &Everything::cache, FieldAttr().With(PropertyFlags::Runtime))
        .Field("old", &Everything::old, FieldAttr().Until(2))
        .Version(2);
    ValueBuilder<Locked>(registry, "Locked", "", "")
        .Field("value", &Locked::value, FieldAttr().With(PropertyFlags::ReadOnly));
    ValueBuilder<Handle>(registry, "Handle", "", "")
        .Field("entity", &Handle::entity, FieldAttr().Kind(PropertyKind::EntityHandle));
    return registry;
}

/// Asset 5 is `mesh:5`, 6 can't be written, and `lost` may stay empty.
SchemaCodecContext HostContext()
{
    SchemaCodecContext context;
    context.assetToText = [](std::uint64_t id, const AssetTypeInfo&)
    { return id == 6 ? std::nullopt : std::optional("mesh:" + std::to_string(id)); };
    context.entityToGuid = [](std::uint32_t entity) { return Core::Guid{0, entity}; };
    context.textToAsset = [](const std::string& text, const AssetTypeInfo&)
    {
        return text == "lost"              ? ~std::uint64_t{0}
               : text.starts_with("mesh:") ? std::stoull("0" + text.substr(5))
                                           : 0;
    };
    return context;
}

Everything Sample()
{
    Everything sample;
    sample.text = "two words";
    sample.weight = -1.5e-7f;
    sample.turn = {0.5f, -0.5f, 0.25f, 1};
    sample.guid = {0x0123456789abcdef, 0xfedcba9876543210};
    sample.mode = Mode::On;
    sample.asset = 5;
    sample.part.label = "";
    sample.parts = {{"a", glm::vec4(0.5f)}, {}};
    sample.samples = {0, 1.5f, -2};
    sample.bits = {{true, false}, {}};
    sample.assets = {5, 0};
    sample.modes = {Mode::On, Mode::Off};
    return sample;
}

template<class Type>
std::string Captured(const Type& object)
{
    SchemaArena arena;
    return Test::WriteRecord(CaptureObject(ViewOf(object), Types(), HostContext(), arena));
}

template<class Type>
std::string Written(const Type& object)
{
    Core::TextWriter out;
    WriteObjectRecord(out, ViewOf(object), Types(), HostContext());
    return std::string(out.Buffered());
}

template<class Function>
bool Throws(Function function)
{
    try
    {
        function();
        return false;
    }
    catch (const std::runtime_error&)
    {
        return true;
    }
}

/// What became of a text: the object, and how much of the text made it.
struct Outcome
{
    Everything object;
    std::size_t bytes = 0;
    std::uint64_t lines = 0;
    friend bool operator==(const Outcome&, const Outcome&) = default;
};

/// By a record that is read and applied.
std::optional<Outcome> Applied(std::string_view text)
{
    Outcome outcome;
    SchemaArena arena;
    Core::LineReader lines(text);
    try
    {
        const SchemaRecord record = Test::ReadRecord(lines, arena, true, outcome.lines);
        ApplyRecord(record, ViewOf(outcome.object), Types(), HostContext());
    }
    catch (const std::runtime_error&)
    {
        return std::nullopt;
    }
    outcome.bytes = lines.Position();
    return outcome;
}

/// Straight from the text.
std::optional<Outcome> Read(std::string_view text)
{
    const std::size_t headEnd = std::min(text.find('\n'), text.size());
    const std::string_view keyword = "component_schema";
    if (!text.starts_with(keyword) || headEnd == text.size())
    {
        return std::nullopt;
    }
    const auto head = ReadRecordHead(text.substr(keyword.size(), headEnd - keyword.size()));
    Outcome outcome;
    const TypeInfo& type = *Types().FindType(TypeIdOf<Everything>());
    const ReadText read = head ? ReadObjectFields(text.substr(headEnd + 1), *head, type,
                                                  ViewOf(outcome.object), Types(), HostContext())
                               : ReadText();
    outcome.bytes = read.bytes + headEnd + 1;
    outcome.lines = read.lines + 1;
    return read.bytes > 0 ? std::optional(outcome) : std::nullopt;
}

TEST(ObjectText, IsTheTextOfTheRecord)
{
    Everything escaped = Sample();
    escaped.text = "\"quoted\"\\\n\t\r" + std::string(1, '\0') + "\xC3\xA4";
    escaped.parts.assign(300, {});
    for (const Everything& object : {Everything(), Sample(), escaped})
    {
        EXPECT_EQ(Written(object), Captured(object));
    }
    EXPECT_EQ(Written(Handle()), Captured(Handle()));
    EXPECT_EQ(Written(Handle{9}), Captured(Handle{9}));
}

TEST(ObjectText, RefusesWhatNoRecordHolds)
{
    const auto change = [](auto apply)
    {
        Everything object = Sample();
        apply(object);
        return object;
    };
    const Everything rows[] = {
        change([](Everything& e) { e.weight = std::numeric_limits<float>::infinity(); }),
        change([](Everything& e) { e.samples = {std::numeric_limits<float>::quiet_NaN()}; }),
        change([](Everything& e) { e.mode = static_cast<Mode>(5); }),
        change([](Everything& e) { e.asset = 6; }),
        change([](Everything& e) { e.samples.resize(1025); }),
        change([](Everything& e) { e.bits.assign(5, std::vector<bool>(1024)); }),
        change([](Everything& e) { e.text.assign(65'535, 'x'); }),
        change(
            [](Everything& e) {
                e.parts.assign(20, {std::string(60'000, 'x'), {}});
            }),
    };
    for (const Everything& object : rows)
    {
        EXPECT_TRUE(Throws([&] { Captured(object); }));
        EXPECT_TRUE(Throws([&] { Written(object); }));
    }
    EXPECT_TRUE(Throws([&] { Written(Locked()); }));

    // The longest line that there may be.
    const Everything longest = change([](Everything& e) { e.text.assign(65'535 - 18, 'x'); });
    EXPECT_EQ(Written(longest), Captured(longest));
}

TEST(ObjectText, ReadsWhatItWrites)
{
    for (const Everything& object : {Everything(), Sample()})
    {
        const std::string text = Written(object);
        const auto lines = static_cast<std::uint64_t>(std::count(text.begin(), text.end(), '\n'));
        EXPECT_EQ(Read(text + "end_entity\n"), (Outcome{object, text.size(), lines}));
    }
    std::string lost = Written(Sample());
    lost.replace(lost.find("mesh:5"), 6, "lost");
    ASSERT_TRUE(Read(lost));
    EXPECT_EQ(Read(lost)->object.asset, 0u);
}

/// Whatever it takes, it takes as the record would be: texts with one byte left out, put in or changed.
TEST(ObjectText, TakesNothingInAnotherWayThanRecords)
{
    const std::string text = Written(Sample());
    std::size_t taken = 0;
    const auto compare = [&](const std::string& changed)
    {
        const std::optional<Outcome> direct = Read(changed);
        taken += direct ? 1 : 0;
        ASSERT_TRUE(!direct || direct == Applied(changed)) << changed;
    };
    for (std::size_t at = 0; at < text.size(); ++at)
    {
        compare(std::string(text).erase(at, 1));
        for (const char c : {'0', '9', ' ', '"', '\\', '\n', '\r', '\0', '-', '.', 'e', 'x', '\t'})
        {
            std::string changed = text;
            changed[at] = c;
            compare(changed);
            compare(std::string(text).insert(at, 1, c));
        }
    }
    EXPECT_GT(taken, 500u);
}

TEST(ObjectText, LeavesOtherFormsToRecords)
{
    const std::string text = Written(Sample());
    const auto replaced = [&](const std::string& from, const std::string& to)
    {
        std::string changed = text;
        changed.replace(changed.find(from), from.size(), to);
        return changed;
    };
    for (const std::string& form :
         {replaced("two words", "two\\twords"), replaced("\" 2 18\n", "\" 1 18\n"),
          replaced("\" 2 18\n", "\" 2 17\n"), replaced("property \"flag\" \"1\"\n", ""),
          replaced("property \"flag\" \"1\"\n", "property  \"flag\" \"1\"\n"),
          text.substr(0, text.size() - 1), replaced("two words", std::string(65'535, 'x'))})
    {
        EXPECT_FALSE(Read(form)) << form.substr(0, 200);
    }
    EXPECT_FALSE(ReadRecordHead(" \"A\" 1"));
    EXPECT_FALSE(ReadRecordHead(" \"A\" 1 2 "));
    EXPECT_FALSE(ReadRecordHead(" A 1 2"));
    EXPECT_FALSE(ReadRecordHead(" \""));
    EXPECT_EQ(ReadRecordHead(" \"A b\" 10 2")->name, "A b");
    EXPECT_EQ(ReadRecordHead(" \"A b\" 10 2")->version, 10u);
    EXPECT_EQ(ReadRecordHead(" \"A b\" 10 2")->fieldCount, 2u);
}

TEST(SchemaRecordList, HoldsRecordsOrWritesThem)
{
    Core::TextWriter out;
    SchemaRecordList held;
    SchemaRecordList written(out);
    const Everything object = Sample();
    for (SchemaRecordList* const list : {&held, &written})
    {
        list->Capture(ViewOf(object), Types(), HostContext());
        EXPECT_EQ(list->SizeOfLast(), Captured(object).size());
        SchemaRecord other(list->Arena(), "Other", 3);
        other.AddField("a", "b");
        list->push_back(other);
        EXPECT_EQ(list->SizeOfLast(), 67u);
    }
    ASSERT_EQ(held.size(), 2u);
    EXPECT_EQ(out.Buffered(), WriteRecord(held[0]) + WriteRecord(held.back()));
    EXPECT_TRUE(written.empty());
    held.clear();
    EXPECT_TRUE(held.empty());
}

} // namespace
} // namespace Vornu::Reflection
