#include "engine/assets/formats/mesh/CookedModel.h"

#include "engine/assets/cooked/CookedContainer.h"
#include "engine/core/files/ByteStream.h"

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <utility>

namespace Vornu::Assets
{
namespace
{

constexpr std::uint32_t kFormatVersion = 1;
constexpr std::uint32_t kMaxShaders = 65'536;
constexpr std::size_t kMinShaderSize = 8;
constexpr std::uint32_t kMaxNameLength = 4'096;

bool IsFileName(std::string_view name)
{
    return !name.empty() && name.find_first_of("/\\:") == std::string_view::npos;
}

std::vector<std::byte> ReadData(Core::ByteReader& reader, std::uint32_t size)
{
    const std::span<const std::byte> data = reader.ReadBytes(size);
    return {data.begin(), data.end()};
}

void WriteData(Core::ByteWriter& writer, std::span<const std::byte> data)
{
    writer.WriteString({reinterpret_cast<const char*>(data.data()), data.size()});
}

CookedModel ReadModel(Core::ByteReader reader)
{
    CookedModel model;
    model.modelData = ReadData(reader, reader.ReadCount(1, std::numeric_limits<std::uint32_t>::max()));
    const std::uint32_t shaders = reader.ReadCount(kMinShaderSize, kMaxShaders);
    for (std::uint32_t i = 0; i < shaders; ++i)
    {
        CookedModelShader shader;
        shader.name = reader.ReadString(kMaxNameLength);
        if (!IsFileName(shader.name))
        {
            throw std::runtime_error("invalid shader file name.");
        }
        shader.data = ReadData(reader, reader.ReadU32());
        model.shaders.push_back(std::move(shader));
    }
    if (reader.Remaining() != 0)
    {
        throw std::runtime_error("trailing data.");
    }
    return model;
}

} // namespace

bool ParseCookedModel(std::span<const std::byte> bytes, std::string_view subject, CookedModel& model,
                      std::string& error)
{
    const auto payload = OpenContainer(bytes, ContainerKind("MODL"), kFormatVersion, subject, &error);
    if (!payload)
    {
        return false;
    }
    try
    {
        model = ReadModel(Core::ByteReader(*payload));
        return true;
    }
    catch (const std::exception& fault)
    {
        error = "Invalid cooked model " + std::string(subject) + ": " + fault.what();
        return false;
    }
}

std::vector<std::byte> EncodeCookedModel(const CookedModel& model)
{
    if (model.shaders.size() > kMaxShaders)
    {
        throw std::length_error("Too many shaders for a cooked model.");
    }
    Core::ByteWriter writer;
    WriteData(writer, model.modelData);
    writer.WriteU32(static_cast<std::uint32_t>(model.shaders.size()));
    for (const CookedModelShader& shader : model.shaders)
    {
        if (!IsFileName(shader.name) || shader.name.size() > kMaxNameLength)
        {
            throw std::invalid_argument("Not a shader's file name: " + shader.name);
        }
        writer.WriteString(shader.name);
        WriteData(writer, shader.data);
    }
    return WrapContainer(ContainerKind("MODL"), kFormatVersion, writer.Bytes());
}

} // namespace Vornu::Assets
