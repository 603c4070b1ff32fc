#include "engine/assets/formats/texture/ImageDecoder.h"

#include "engine/assets/identity/AssetKind.h"

#include <map>
#include <memory>
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
    std::map<std::string, std::shared_ptr<const ImageDecoder>, std::less<>> decoders; // by extension
};

DecoderTable& Decoders()
{
    static DecoderTable table;
    return table;
}

std::shared_ptr<const ImageDecoder> FindDecoder(std::string_view extension)
{
    DecoderTable& table = Decoders();
    const std::lock_guard lock(table.mutex);
    const auto found = table.decoders.find(extension);
    return found == table.decoders.end() ? nullptr : found->second;
}

} // namespace

void RegisterImageDecoder(std::string_view extension, ImageDecoder decoder)
{
    std::shared_ptr<const ImageDecoder> shared;
    if (decoder)
    {
        shared = std::make_shared<const ImageDecoder>(std::move(decoder));
    }
    DecoderTable& table = Decoders();
    const std::lock_guard lock(table.mutex);
    table.decoders[std::string(extension)].swap(shared); // the old one goes once the lock is free
}

ImportedTexture DecodeImage(const std::filesystem::path& path)
{
    const std::string extension = LowerExtension(path);
    const std::shared_ptr<const ImageDecoder> decoder = FindDecoder(extension);
    if (!decoder)
    {
        throw std::runtime_error(
            "No image decoder for '" + extension +
            "' is registered in this program (source importers are authoring-only): " + path.native());
    }
    return (*decoder)(path);
}

} // namespace Vornu::Assets
