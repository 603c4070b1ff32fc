// The rules of reading are the same for all positional records, so all records are held against them: a line
// that ends early leaves what it doesn't reach at its default, and so does what stands behind a bad token.

#include "tests/scene/legacy/LegacyText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace Vornu::Scene::Legacy
{
namespace
{

using Test::LegacyText;
using Words = std::vector<std::string>;
using Leaves = std::map<std::string, std::string>; // by path; a vector has a leaf for each number

/// Records that some other rule holds beside the common ones; their own tests know it.
constexpr std::string_view kWithoutCuts[] = {"mesh_renderer",   "path_walker",     "cloth_pin_weights",
                                             "terrain_heights", "terrain_weights", "script_field"};

/// Records that begin with the place of what they change.
constexpr std::string_view kIndexed[] = {
    "animator_layer",         "animator_layer_mask",    "animator_ik_chain",
    "animator_ik_chain_bone", "animator_look_at_chain", "animator_pose",
    "mesh_material_slot",     "spline_material_slot",   "spline_segment_material"};

/// Fields, from 1, that count only when the line reaches the last of them.
struct Stage
{
    std::string_view keyword;
    std::size_t first;
    std::size_t lastAffected;
    std::size_t last;
};
constexpr Stage kStages[] = {
    {"cloth", 40, 40, 43},
    {"character_controller", 29, 29, 33},
    {"particle_emitter", 44, 47, 47},
    {"animator_ik_chain", 22, 27, 27},
    {"animator_look_at_chain", 15, 17, 17},
};

/// Leaves that get a value from another field when their own is missing.
constexpr std::string_view kOtherSources[] = {
    "AnimatorComponent.showBones",
    "AnimatorComponent.lookAtChains[1].useTargetEntity", // the older form begins like the newer
    "AnimatorComponent.lookAtChains[1].targetEntityName",
    "ThirdPersonCameraControllerComponent.aimTargetGuid", // from the entity's place in the file
};

bool Contains(std::span<const std::string_view> list, std::string_view word)
{
    return std::find(list.begin(), list.end(), word) != list.end();
}

bool IsStrict(const std::string& keyword)
{
    return keyword.starts_with("buoyancy_") || keyword.starts_with("ocean_v");
}

Words Split(const std::string& line)
{
    Words words;
    for (std::size_t at = 0; at < line.size();)
    {
        const bool quoted = line[at] == '"';
        std::size_t end = at + 1;
        while (end < line.size() && line[end] != (quoted ? '"' : ' '))
        {
            end += line[end] == '\\' ? 2 : 1;
        }
        end += quoted ? 1 : 0;
        words.push_back(line.substr(at, end - at));
        at = line.find_first_not_of(' ', end);
    }
    return words;
}

std::string Join(const Words& words, std::size_t count)
{
    std::string line;
    for (std::size_t i = 0; i < count; ++i)
    {
        line += (i > 0 ? " " : "") + words[i];
    }
    return line;
}

/// A record of the example that has them all, with the records of its entity that stand before it.
struct Record
{
    Words words;
    std::string before;
};

std::vector<Record> AllRecords(LegacyText& legacy)
{
    std::istringstream file(
        Platform::ReadFileBinary(VORNU_EXAMPLES "/Content/Levels/every_record_v5.vscene").bytes);
    std::vector<Record> records;
    std::string before;
    bool inEntity = false;
    for (std::string line; std::getline(file, line);)
    {
        // Any asset will do, so a built-in stands for each.
        for (std::size_t at = 0; (at = line.find("\"content:", at)) != std::string::npos;)
        {
            const std::string name = line.substr(at + 9, line.find('"', at + 1) - at - 9);
            legacy.assets.GetRegistry().RegisterBuiltin(Assets::KindFromExtension(name), name);
            line.replace(at, 9, "\"builtin:");
        }
        const Words words = Split(line);
        inEntity = words[0] == "entity" || (inEntity && words[0] != "end_entity");
        if (words[0] == "entity")
        {
            before.clear();
        }
        else if (inEntity && words[0] != "parent")
        {
            records.push_back({words, before});
            before += line + "\n";
        }
    }
    return records;
}

/// Reads the properties of a converted text.
class LeafReader
{
public:
    explicit LeafReader(const std::string& text) : lines_(text) {}

    /// By entity name; paths begin with the record's name.
    std::map<std::string, Leaves> Read()
    {
        std::map<std::string, Leaves> entities;
        Leaves* entity = nullptr;
        while (Next())
        {
            if (words_[0] == "entity")
            {
                entity = &entities[words_[2]];
            }
            else if (words_[0] == "component_schema" && entity != nullptr)
            {
                ReadRecord(Unquoted(words_[1]), *entity);
            }
        }
        return entities;
    }

private:
    static std::string Unquoted(const std::string& word) { return word.substr(1, word.size() - 2); }

    bool Next()
    {
        std::string line;
        if (!std::getline(lines_, line))
        {
            return false;
        }
        words_ = Split(line);
        return true;
    }

    static void Add(const std::string& path, const std::string& value, Leaves& leaves)
    {
        std::istringstream parts(Unquoted(value));
        std::string part;
        for (int i = 0; parts >> part; ++i)
        {
            leaves[path + "/" + std::to_string(i)] = part;
        }
    }

    void ReadRecord(const std::string& path, Leaves& leaves)
    {
        while (Next() && words_[0] != "end_component_schema")
        {
            const std::string inner = path + "." + Unquoted(words_[1]);
            if (words_[0] == "property")
            {
                Add(inner, words_[2], leaves);
            }
            else if (words_[0] == "object_property")
            {
                ReadRecord(inner, leaves);
            }
            else
            {
                ReadArray(inner, leaves);
            }
        }
    }

    void ReadArray(const std::string& path, Leaves& leaves)
    {
        for (int i = 0; Next() && words_[0] != "end_array"; ++i)
        {
            const std::string inner = path + "[" + std::to_string(i) + "]";
            if (words_[0] == "value")
            {
                Add(inner, words_[1], leaves);
            }
            else
            {
                ReadRecord(inner, leaves);
            }
        }
    }

    std::istringstream lines_;
    Words words_;
};

/// Another word of the same sort.
std::string Altered(const std::string& word)
{
    if (word[0] == '"')
    {
        return word == "\"\"" ? "\"other\"" : "\"\"";
    }
    return word == "0" || word == "1" ? std::to_string(1 - std::stoi(word)) : "0";
}

/// The variants of one record, each on an entity of its own in one file.
class Variants
{
public:
    explicit Variants(const Record& record) : before_(record.before) {}

    /// Gives the number of the variant.
    std::size_t Add(const std::string& line)
    {
        text_ += "entity \"\" \"V" + std::to_string(count_) + "\"\n" + before_ + line + "\nend_entity\n";
        return count_++;
    }

    std::vector<Leaves> Convert(LegacyText& legacy) const
    {
        // The first three are the ones that other records name by their place.
        const std::string head = "scene_version 5\nentity \"\" \"A\"\nentity \"\" \"B\"\nentity \"\" \"C\"\n";
        const std::string converted = legacy.Convert(head + text_);
        EXPECT_NE(converted[0], '<') << converted;
        std::map<std::string, Leaves> entities = LeafReader(converted).Read();
        std::vector<Leaves> leaves;
        for (std::size_t i = 0; i < count_; ++i)
        {
            leaves.push_back(entities["\"V" + std::to_string(i) + "\""]);
        }
        return leaves;
    }

private:
    std::string before_;
    std::string text_;
    std::size_t count_ = 0;
};

std::string ValueOf(const Leaves& leaves, const std::string& path)
{
    const auto found = leaves.find(path);
    return found == leaves.end() ? std::string() : found->second;
}

/// The first word count at which a leaf has its value from the line.
std::size_t CountsFrom(const std::string& keyword, std::size_t field)
{
    for (const Stage& stage : kStages)
    {
        if (stage.keyword == keyword && field >= stage.first && field <= stage.lastAffected)
        {
            return stage.last;
        }
    }
    return field;
}

void ExpectCuts(const Record& record, LegacyText& legacy)
{
    const Words& words = record.words;
    const std::string& keyword = words[0];
    const std::size_t head = Contains(kIndexed, keyword) ? 2 : 1; // words that every cut keeps
    Variants variants(record);
    std::vector<std::size_t> cuts(words.size() + 1);
    std::vector<std::size_t> altered(words.size());
    for (std::size_t count = head; count <= words.size(); ++count)
    {
        cuts[count] = variants.Add(Join(words, count));
    }
    for (std::size_t i = head; i < words.size(); ++i)
    {
        Words other = words;
        other[i] = Altered(words[i]);
        altered[i] = variants.Add(Join(other, other.size()));
    }
    const std::vector<Leaves> leaves = variants.Convert(legacy);
    const Leaves& full = leaves[cuts[words.size()]];
    const Leaves& none = leaves[cuts[head]];
    for (const auto& [path, value] : full)
    {
        // The one field that the leaf comes from; leaves that mix several have tests of their own.
        std::vector<std::size_t> fields;
        for (std::size_t i = head; i < words.size(); ++i)
        {
            if (ValueOf(leaves[altered[i]], path) != value)
            {
                fields.push_back(i);
            }
        }
        const bool isOther = std::any_of(std::begin(kOtherSources), std::end(kOtherSources),
                                         [&](std::string_view other) { return path.starts_with(other); });
        if (fields.size() > 1 || isOther)
        {
            continue;
        }
        const std::size_t from = fields.empty() ? 0 : CountsFrom(keyword, fields.front());
        for (std::size_t count = head; count <= words.size(); ++count)
        {
            const bool reached = fields.empty() || count > from;
            // An element that the line alone makes isn't there without it.
            const Leaves& expected = reached ? full : none;
            EXPECT_EQ(ValueOf(leaves[cuts[count]], path), ValueOf(expected, path))
                << path << " in: " << Join(words, count);
        }
    }
}

/// Every cut of a record whose fields must all be there fails, or gives no component.
void ExpectRefusedCuts(const Record& record, LegacyText& legacy)
{
    for (std::size_t count = 1; count < record.words.size(); ++count)
    {
        const std::string text =
            "scene_version 5\nentity \"\" \"V\"\n" + record.before + Join(record.words, count) + "\n";
        const std::string fault = legacy.Read(text);
        EXPECT_TRUE(fault.starts_with("Malformed " + record.words[0] + " ")) << fault;
    }
}

void ExpectSoftCuts(const Record& record, LegacyText& legacy)
{
    Variants variants(record);
    for (std::size_t count = 1; count < record.words.size(); ++count)
    {
        variants.Add(Join(record.words, count));
    }
    for (const Leaves& leaves : variants.Convert(legacy))
    {
        EXPECT_EQ(leaves.lower_bound("OceanComponent"), leaves.lower_bound("OceanComponenu"));
    }
}

TEST(RecordCuts, LeaveWhatTheLineDoesNotReachAtItsDefault)
{
    LegacyText legacy;
    const std::vector<Record> records = AllRecords(legacy);
    EXPECT_GT(records.size(), 70u);
    for (const Record& record : records)
    {
        const std::string& keyword = record.words[0];
        if (IsStrict(keyword))
        {
            ExpectRefusedCuts(record, legacy);
        }
        else if (keyword == "ocean")
        {
            ExpectSoftCuts(record, legacy);
        }
        else if (!Contains(kWithoutCuts, keyword))
        {
            ExpectCuts(record, legacy);
        }
    }
}

/// A word in place of a number is as good as a line that ends with a 0 there.
TEST(RecordCuts, BadTokensStopTheRecordAtZero)
{
    LegacyText legacy;
    for (const Record& record : AllRecords(legacy))
    {
        const Words& words = record.words;
        const std::string& keyword = words[0];
        if (IsStrict(keyword) || keyword == "ocean" || keyword == "animator" || keyword == "mesh_renderer")
        {
            continue; // strict, soft, or with fields that don't stop the record
        }
        Variants variants(record);
        std::vector<std::pair<std::size_t, std::size_t>> pairs;
        for (std::size_t i = 1; i < words.size(); ++i)
        {
            const bool isStaged =
                std::any_of(std::begin(kStages), std::end(kStages),
                            [&](const Stage& stage)
                            { return stage.keyword == keyword && i >= stage.first && i <= stage.last; });
            if (words[i][0] != '"' && !isStaged && !(keyword == "path_walker" && i > 11) &&
                !(keyword == "spline_point" && i == 14))
            {
                const std::string rest = Join(
                    {words.begin() + static_cast<std::ptrdiff_t>(i) + 1, words.end()}, words.size() - i - 1);
                const std::size_t bad = variants.Add(Join(words, i) + " x " + rest);
                pairs.emplace_back(bad, variants.Add(Join(words, i) + " 0"));
            }
        }
        const std::vector<Leaves> leaves = variants.Convert(legacy);
        for (const auto& [bad, zero] : pairs)
        {
            EXPECT_EQ(leaves[bad], leaves[zero]) << keyword << ", variant " << bad;
        }
    }
}

} // namespace
} // namespace Vornu::Scene::Legacy
