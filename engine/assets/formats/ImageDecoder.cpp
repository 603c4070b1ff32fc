#include "engine/assets/formats/ImageDecoder.h"

#include "engine/assets/AssetKind.h"

#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>

namespace Vornu::Assets
{
namespace
{

struct DecoderTable
{
    std::mutex mutex;
    std::map<std::string, ImageDecoder, std::less<>> decoders; // by extension
};

DecoderTable& Decoders()
{
    static DecoderTable table;
    return table;
}

ImageDecoder FindDecoder(std::string_view extension)
{
    DecoderTable& table = Decoders();
    const std::lock_guard lock(table.mutex);
    const auto found = table.decoders.find(extension);
    return found == table.decoders.end() ? nullptr : found->second;
}

} // namespace

void RegisterImageDecoder(std::string_view extension, ImageDecoder decoder)
{
    DecoderTable& table = Decoders();
    const std::lock_guard lock(table.mutex);
    table.decoders.insert_or_assign(std::string(extension), std::move(decoder));
}

ImportedTexture DecodeImage(const std::filesystem::path& path)
{
    const std::string extension = LowerExtension(path);
    const ImageDecoder decoder = FindDecoder(extension);
    if (!decoder)
    {
        throw std::runtime_error(
            "No image decoder for '" + extension +
            "' is registered in this program (source importers are authoring-only): " + path.native());
    }
    return decoder(path);
}

} // namespace Vornu::Assets
