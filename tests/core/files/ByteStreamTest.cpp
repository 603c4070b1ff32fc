#include "engine/core/files/ByteStream.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>

namespace Vornu::Core
{
namespace
{

std::string Failure(const std::function<void()>& action)
{
    try
    {
        action();
    }
    catch (const std::runtime_error& error)
    {
        return error.what();
    }
    return "none";
}

TEST(ByteStream, RoundTripIsLittleEndian)
{
    ByteWriter writer;
    writer.WriteU8(0x01);
    writer.WriteU16(0x0203);
    writer.WriteU32(0x04050607);
    writer.WriteU64(0x08090A0B0C0D0E0Full);
    writer.WriteString("text");
    EXPECT_EQ(writer.Bytes()[1], std::byte{0x03});
    ByteReader reader(writer.Bytes());
    EXPECT_EQ(reader.ReadU8(), 0x01);
    EXPECT_EQ(reader.ReadU16(), 0x0203);
    EXPECT_EQ(reader.ReadU32(), 0x04050607u);
    EXPECT_EQ(reader.ReadU64(), 0x08090A0B0C0D0E0Full);
    EXPECT_EQ(reader.ReadString(4), "text");
    EXPECT_EQ(reader.Remaining(), 0u);
}

TEST(ByteStream, DataThatCanNotBeThereIsRefusedBeforeAnythingIsReserved)
{
    ByteWriter writer;
    writer.WriteU32(5);
    writer.WriteU32(0);
    const auto fresh = [&] { return ByteReader(writer.Bytes()); };
    EXPECT_EQ(Failure([&] { fresh().ReadBytes(9); }), "Cooked data ends early.");
    EXPECT_EQ(Failure([&] { fresh().ReadString(4); }), "Cooked string exceeds its limit.");
    EXPECT_EQ(Failure([&] { fresh().ReadString(5); }), "Cooked data ends early.");
    EXPECT_EQ(Failure([&] { fresh().ReadCount(0, 4); }), "Cooked item count exceeds its limit.");
    EXPECT_EQ(Failure([&] { fresh().ReadCount(1, 5); }), "Cooked item count exceeds the data.");
    EXPECT_EQ(fresh().ReadCount(0, 5), 5u);
    ByteReader end(writer.Bytes());
    end.ReadU64();
    EXPECT_EQ(Failure([&] { end.ReadU8(); }), "Cooked data ends early.");
}

} // namespace
} // namespace Vornu::Core
