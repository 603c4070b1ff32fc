#include "engine/scene/registration/SaveGameFields.h"

#include "engine/scene/Scene.h"
#include "engine/scene/components/AnimatorComponents.h"
#include "engine/scene/components/GameplayComponents.h"
#include "engine/scene/components/PhysicsComponents.h"
#include "engine/scene/registration/ComponentBuilder.h"
#include "tests/core/Failure.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace Vornu::Scene
{
namespace
{

using Test::FailureOf;

const ComponentSaveGameFields& FieldsOf(const char* component)
{
    return ComponentRegistry::Instance().Find(component)->saveGame;
}

std::vector<std::byte> Bytes(std::initializer_list<unsigned> numbers)
{
    std::vector<std::byte> bytes;
    for (const unsigned number : numbers)
    {
        bytes.push_back(static_cast<std::byte>(number));
    }
    return bytes;
}

class SaveGameFieldsTest : public testing::Test
{
protected:
    Scene scene_;
    SaveGameFieldCodecContext context_{&scene_};
};

TEST_F(SaveGameFieldsTest, StateOfABodyComesBackBitForBit)
{
    RigidBodyComponent body;
    body.linearVelocity = {1, -0.0f, std::numeric_limits<float>::quiet_NaN()};
    body.isAwake = false;
    const SaveGameFieldSet set = FieldsOf("RigidBodyComponent").Capture(&body, context_);
    EXPECT_EQ(set.version, 1u);
    ASSERT_EQ(set.fields.size(), 3u);
    EXPECT_EQ(set.fields[0].first, "linearVelocity");
    EXPECT_EQ(set.fields[0].second, Bytes({0, 0, 0x80, 0x3F, 0, 0, 0, 0x80, 0, 0, 0xC0, 0x7F}));
    EXPECT_EQ(set.fields[2].first, "isAwake");
    EXPECT_EQ(set.fields[2].second, Bytes({0}));

    RigidBodyComponent other;
    other.mass = 9;
    FieldsOf("RigidBodyComponent").Apply(&other, set, context_);
    EXPECT_EQ(FieldsOf("RigidBodyComponent").Capture(&other, context_).fields, set.fields);
    EXPECT_EQ(other.mass, 9.0f);
}

TEST_F(SaveGameFieldsTest, ApplyIsAllOrNothing)
{
    const ComponentSaveGameFields& fields = FieldsOf("RigidBodyComponent");
    const auto velocity = Bytes({0, 0, 0x80, 0x3F, 0, 0, 0, 0, 0, 0, 0, 0});
    const std::pair<SaveGameFieldSet, std::string> rows[] = {
        {{1, {{"linearVelocity", velocity}, {"isAwake", Bytes({2})}}}, "Malformed save-game bool."},
        {{1, {{"linearVelocity", velocity}, {"isAwake", Bytes({0, 0})}}},
         "Save-game field 'isAwake' has trailing bytes."},
        {{1, {{"linearVelocity", velocity}, {"isAwake", {}}}},
         FailureOf([] { Core::ByteReader({}).ReadU8(); })},
    };
    for (const auto& [set, expected] : rows)
    {
        RigidBodyComponent body;
        EXPECT_EQ(FailureOf([&] { fields.Apply(&body, set, context_); }), expected);
        EXPECT_EQ(body.linearVelocity, glm::vec3(0));
        EXPECT_TRUE(body.isAwake);
    }

    RigidBodyComponent body;
    body.angularVelocity = {3, 0, 0};
    std::vector<std::string> unknown = {"before"};
    const SaveGameFieldSet set{1, {{"spin", Bytes({1})}, {"linearVelocity", velocity}, {"IsAwake", {}}}};
    fields.Apply(&body, set, context_, &unknown);
    EXPECT_EQ(unknown, (std::vector<std::string>{"before", "spin", "IsAwake"}));
    EXPECT_EQ(body.linearVelocity, glm::vec3(1, 0, 0));
    EXPECT_EQ(body.angularVelocity, glm::vec3(3, 0, 0)) << "the set doesn't mention it";
    fields.Apply(&body, set, context_);
}

TEST_F(SaveGameFieldsTest, AnimatorsKeepTheTimesOfTheirLayers)
{
    const ComponentSaveGameFields& fields = FieldsOf("AnimatorComponent");
    AnimatorComponent animator;
    animator.currentState = "Run\n\xFF";
    animator.spineLeanForward = {0, 0, 1};
    animator.layers.resize(2);
    animator.layers[1].timeSeconds = 1.5f;
    SaveGameFieldSet set = fields.Capture(&animator, context_);
    EXPECT_EQ(set.fields[1].second, Bytes({5, 0, 0, 0, 'R', 'u', 'n', '\n', 0xFF}));

    AnimatorComponent fewer;
    fewer.layers.resize(1);
    fewer.layers[0].timeSeconds = 7;
    fields.Apply(&fewer, set, context_);
    EXPECT_EQ(fewer.currentState, animator.currentState);
    EXPECT_EQ(fewer.spineLeanForward, glm::vec3(0, 0, 1));
    EXPECT_EQ(fewer.layers[0].timeSeconds, 0.0f);
    AnimatorComponent more;
    more.layers.resize(3);
    more.layers[2].timeSeconds = 7;
    fields.Apply(&more, set, context_);
    EXPECT_EQ(more.layers[1].timeSeconds, 1.5f);
    EXPECT_EQ(more.layers[2].timeSeconds, 7.0f);

    // Lengths are refused before memory is asked for.
    for (const char* const name : {"currentState", "layerTimes"})
    {
        set.fields = {{name, Bytes({0xFF, 0xFF, 0xFF, 0xFF})}};
        EXPECT_NE(FailureOf([&] { fields.Apply(&more, set, context_); }), "none");
    }
}

TEST_F(SaveGameFieldsTest, EntitiesAreKeptByTheirGuids)
{
    const ComponentSaveGameFields& fields = FieldsOf("CharacterControllerComponent");
    const Entity ground = scene_.CreateEntity("ground", {0x0102030405060708u, 9});
    CharacterControllerComponent controller;
    controller.groundEntity = ground;
    const auto captured = [&](const SaveGameFieldCodecContext& context)
    {
        for (auto& [name, bytes] : fields.Capture(&controller, context).fields)
        {
            if (name == "groundEntity")
            {
                return bytes;
            }
        }
        return std::vector<std::byte>();
    };
    const auto none = std::vector<std::byte>(16);
    const auto stored = Bytes({8, 7, 6, 5, 4, 3, 2, 1, 9, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ(captured(context_), stored);
    EXPECT_EQ(captured({}), none);

    const auto applied = [&](const std::vector<std::byte>& bytes, const SaveGameFieldCodecContext& context)
    {
        CharacterControllerComponent target;
        target.groundEntity = 12345;
        fields.Apply(&target, {1, {{"groundEntity", bytes}}}, context);
        return target.groundEntity;
    };
    EXPECT_EQ(applied(stored, context_), ground);
    EXPECT_EQ(applied(stored, {}), kNullEntity);
    EXPECT_EQ(applied(none, context_), kNullEntity);
    scene_.DestroyEntity(ground);
    EXPECT_EQ(captured(context_), none);
    EXPECT_EQ(applied(stored, context_), kNullEntity);
}

TEST_F(SaveGameFieldsTest, OldStateIsMigratedAndUnknownVersionsAreRefused)
{
    ComponentSaveGameFields fields;
    fields.version = 3;
    const auto range = [](const std::string& version)
    { return "Save-game state of Body has version " + version + "; this build reads versions 1 to 3."; };
    SaveGameFieldSet set{0, {}};
    EXPECT_EQ(FailureOf([&] { fields.BringUpToDate(set, "Body"); }), range("0"));
    set.version = 4;
    EXPECT_EQ(FailureOf([&] { fields.BringUpToDate(set, "Body"); }), range("4"));
    set.version = 1;
    fields.BringUpToDate(set, "Body");
    EXPECT_EQ(set.version, 3u);

    std::vector<std::uint32_t> calls;
    fields.migrate = [&](SaveGameFieldSet& old, std::uint32_t from)
    {
        calls.push_back(from);
        old.fields.emplace_back("new", Bytes({1}));
    };
    fields.BringUpToDate(set, "Body");
    set.version = 2;
    fields.BringUpToDate(set, "Body");
    EXPECT_EQ(calls, std::vector<std::uint32_t>{2});
    EXPECT_EQ(set.version, 3u);
    EXPECT_EQ(set.fields.size(), 1u);
}

struct SaveGameTestComponent
{
    bool open = false;
};

TEST_F(SaveGameFieldsTest, RegistrationRefusesNamesThatAreTaken)
{
    auto builder = RegisterComponent<SaveGameTestComponent>("SaveGameTest", "", "", ComponentFlags::None);
    builder.SaveGame("open", &SaveGameTestComponent::open).SaveGameVersion(2).Replicated("open");
    const auto fault = [](auto call) { return FailureOf<std::invalid_argument>(call); };
    EXPECT_EQ(fault([&] { builder.SaveGame("open", &SaveGameTestComponent::open); }),
              "Duplicate save-game field: SaveGameTest.open");
    EXPECT_EQ(fault([&] { builder.Replicated("open"); }), "Field replicated twice: SaveGameTest.open");
    EXPECT_EQ(fault([&] { builder.Replicated(""); }), "Replicated field path is empty: SaveGameTest");
    EXPECT_EQ(FieldsOf("SaveGameTest").fields.size(), 1u);
    EXPECT_EQ(FieldsOf("SaveGameTest").version, 2u);
}

} // namespace
} // namespace Vornu::Scene
