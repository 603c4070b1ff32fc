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

/// The first word of a line that is longer than the reader's buffer. One that can be no keyword of the
/// current format is cut unless the `whole` word is asked for.
std::string FirstWordOfLongLine(Core::LineReader& source, std::string_view part, bool whole)
{
    constexpr std::size_t kLongest = 64;
    std::string word;
    do
    {
        if (word.empty())
        {
            part.remove_prefix(static_cast<std::size_t>(
                std::find_if_not(part.begin(), part.end(), Core::IsSpace) - part.begin()));
        }
        const auto end = std::find_if(part.begin(), part.end(), Core::IsSpace);
        word.append(part.begin(), end);
        if (end != part.end() || (!whole && word.size() > kLongest))
        {
            break;
        }
    } while (source.ReadLineRest(part));
    return word;
}

/// Finds the first line outside schema blocks that the current format doesn't know. The source stands behind
/// the header; what precedes that holds comments alone.
std::optional<std::string> FindPositionalRecord(Core::LineReader& source, std::uint64_t lineNumber)
{
    std::uint64_t depth = 0;
    std::string_view line;
    std::string longWord;
    while (source.ReadLineHead(line))
    {
        ++lineNumber;
        // Most lines are those of leaves in a block.
        if (line.empty() || line.front() == '#' || (depth > 0 && line.starts_with("property ")))
        {
            continue;
        }
        std::string_view word;
        if (source.IsInLine())
        {
            longWord = FirstWordOfLongLine(source, line, depth == 0);
            word = longWord;
        }
        else
        {
            word = Core::TokenReader(line).ReadWord();
        }
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
