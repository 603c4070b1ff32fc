#include "tools/upgrade/Classify.h"

#include "engine/core/files/InputFile.h"
#include "engine/core/files/ReadFaults.h"
#include "engine/core/system/System.h"
#include "engine/core/text/TokenReader.h"
#include "engine/scene/files/SceneStage.h"
#include "engine/scene/files/SceneVersionProbe.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <stdexcept>
#include <string_view>

namespace Vornu::Upgrade
{
namespace
{

constexpr std::string_view kOpeningWords[] = {"component_schema", "object_property", "object",
                                              "array_property", "array"};
constexpr std::string_view kClosingWords[] = {"end_component_schema", "end_array"};
constexpr std::string_view kFrameWords[] = {"scene_version", "entity", "parent", "end_entity"};

template<std::size_t Count>
bool IsOneOf(std::string_view word, const std::string_view (&words)[Count])
{
    return std::find(std::begin(words), std::end(words), word) != std::end(words);
}

void RequireRead(const Core::LineReader& source)
{
    if (source.Failed())
    {
        throw std::runtime_error("the file could not be read to its end");
    }
}

/// Finds the first line outside schema blocks that the current format doesn't know. The source stands behind
/// the header; what precedes that holds comments alone.
std::optional<std::string> FindPositionalRecord(Core::LineReader& source, std::uint64_t lineNumber)
{
    std::uint64_t depth = 0;
    std::string_view line;
    while (source.ReadLine(line))
    {
        ++lineNumber;
        // Most lines are those of leaves in a block.
        if (line.empty() || line.front() == '#' || (depth > 0 && line.starts_with("property ")))
        {
            continue;
        }
        const std::string_view word = Core::TokenReader(line).ReadWord();
        if (word.empty())
        {
            continue;
        }
        if (IsOneOf(word, kOpeningWords))
        {
            ++depth;
        }
        else if (IsOneOf(word, kClosingWords))
        {
            depth -= depth > 0 ? 1 : 0;
        }
        else if (depth == 0 && !IsOneOf(word, kFrameWords))
        {
            return "positional record '" + std::string(word) + "' at line " + std::to_string(lineNumber);
        }
    }
    RequireRead(source);
    return std::nullopt;
}

} // namespace

Classification Classify(const std::filesystem::path& path)
{
    Core::InputFile file(path);
    if (file.IsOpen())
    {
        Core::LineReader source(file);
        return ClassifyText(source);
    }
    if (file.Error() == EACCES || Platform::TellsOfAbsence(file.Error()))
    {
        return {};
    }
    throw std::runtime_error("the file could not be opened: " + Platform::SystemErrorText(file.Error()));
}

std::optional<std::string> ClassifyFile(const std::filesystem::path& path)
{
    return Classify(path).reason;
}

Classification ClassifyText(Core::LineReader& source)
{
    std::uint64_t lineNumber = 0;
    Classification result{Scene::ProbeSceneVersion(source, lineNumber), std::nullopt};
    RequireRead(source);
    const Scene::SceneVersionProbe& probe = result.probe;
    if (probe.found && probe.version >= 1 && probe.version < Scene::kSceneFormatVersion)
    {
        result.reason = "scene format version " + std::to_string(probe.version);
    }
    else if (probe.found && probe.version == Scene::kSceneFormatVersion)
    {
        result.reason = FindPositionalRecord(source, lineNumber);
    }
    return result;
}

} // namespace Vornu::Upgrade
