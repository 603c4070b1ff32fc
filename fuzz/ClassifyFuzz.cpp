#include "fuzz/FuzzFiles.h"
#include "tools/upgrade/Classify.h"

/// Any file gets an answer, and the same one twice.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace Vornu;
    static const std::filesystem::path source = Fuzz::ScratchFile("classify.vscene");
    Fuzz::WriteBytes(source, data, size);
    Fuzz::Require(Upgrade::ClassifyFile(source) == Upgrade::ClassifyFile(source), "two answers for one file");
    return 0;
}
