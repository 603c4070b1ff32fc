#include "engine/assets/cooked/CookedContainer.h"
#include "engine/assets/formats/mesh/CookedModel.h"
#include "fuzz/FuzzFiles.h"

#include <span>

/// The input is a payload, wrapped here so that it passes the checksum. A model that reads has one form
/// alone, the file that it was read from.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace Vornu;
    const auto file =
        Assets::WrapContainer(Assets::ContainerKind("MODL"), 1, std::as_bytes(std::span(data, size)));
    Assets::CookedModel model;
    std::string error;
    const bool read = Assets::ParseCookedModel(file, "model", model, error);
    Fuzz::Require(read == error.empty(), "a read and its error disagree: " + error);
    Fuzz::Require(read ? Assets::EncodeCookedModel(model) == file : model == Assets::CookedModel(),
                  "a model changed over a read and a write");
    return 0;
}
