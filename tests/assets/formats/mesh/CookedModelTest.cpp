#include "engine/assets/formats/mesh/CookedModel.h"
#include "engine/assets/cooked/CookedContainer.h"
#include "engine/core/files/ByteStream.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

namespace Vornu::Assets
{
namespace
{

std::vector<std::byte> Bytes(std::string_view text)
{
    const auto bytes = std::as_bytes(std::span(text));
    return {bytes.begin(), bytes.end()};
}

CookedModel SomeModel()
{
    return {Bytes("model"), {{"a.vert.spv", Bytes("one")}, {"b", {}}}};
}

std::string FaultOf(const std::function<void(Core::ByteWriter&)>& write)
{
    Core::ByteWriter payload;
    write(payload);
    CookedModel model = SomeModel();
    std::string error;
    EXPECT_FALSE(
        ParseCookedModel(WrapContainer(ContainerKind("MODL"), 1, payload.Bytes()), "m.fbx", model, error));
    EXPECT_EQ(model, SomeModel());
    return error;
}

void WriteShader(Core::ByteWriter& writer, std::string_view name)
{
    writer.WriteU32(0);
    writer.WriteU32(1);
    writer.WriteString(name);
    writer.WriteU32(0);
}

TEST(CookedModel, ComesBackAndNoCutOrFlippedFileDoes)
{
    const std::vector<std::byte> file = EncodeCookedModel(SomeModel());
    CookedModel model;
    std::string error;
    ASSERT_TRUE(ParseCookedModel(file, "m.fbx", model, error)) << error;
    EXPECT_EQ(model, SomeModel());
    for (std::size_t size = 0; size < file.size(); ++size)
    {
        EXPECT_FALSE(ParseCookedModel(std::span(file).first(size), "m.fbx", model, error)) << size;
    }
    for (std::size_t bit = 0; bit < kContainerHeaderSize * 8; ++bit)
    {
        std::vector<std::byte> flipped = file;
        flipped[bit / 8] ^= std::byte{1} << bit % 8;
        const bool isReserved = bit / 8 >= kContainerHeaderSize - 8; // read by nobody
        EXPECT_EQ(ParseCookedModel(flipped, "m.fbx", model, error), isReserved) << bit;
    }
}

TEST(CookedModel, NamesTheFaultOfAPayload)
{
    const std::string prefix = "Invalid cooked model m.fbx: ";
    EXPECT_EQ(FaultOf([](auto& w) { w.WriteU32(1); }), prefix + "Cooked item count exceeds the data.");
    EXPECT_EQ(FaultOf([](auto& w) { w.WriteU64(65'537ull << 32); }),
              prefix + "Cooked item count exceeds its limit.");
    EXPECT_EQ(FaultOf([](auto& w) { w.WriteU64(1ull << 32); }),
              prefix + "Cooked item count exceeds the data.");
    EXPECT_EQ(FaultOf([](auto& w) { WriteShader(w, std::string(4'097, 'n')); }),
              prefix + "Cooked string exceeds its limit.");
    for (const char* const name : {"", "a/b", "a\\b", "c:d"})
    {
        EXPECT_EQ(FaultOf([&](auto& w) { WriteShader(w, name); }), prefix + "invalid shader file name.");
    }
    EXPECT_EQ(FaultOf(
                  [](auto& w)
                  {
                      WriteShader(w, "a");
                      w.WriteU8(0);
                  }),
              prefix + "trailing data.");
    EXPECT_THROW(EncodeCookedModel({{}, {{"a/b", {}}}}), std::invalid_argument);
}

} // namespace
} // namespace Vornu::Assets
