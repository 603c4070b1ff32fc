#include "engine/scene/SceneVersionProbe.h"

#include "engine/core/InputFile.h"
#include "engine/core/TokenReader.h"

namespace Vornu::Scene
{

SceneVersionProbe ProbeSceneVersion(const std::filesystem::path& path)
{
    Core::InputFile file(path);
    if (!file.IsOpen())
    {
        return {};
    }
    Core::LineReader lines(file);
    std::uint64_t lineNumber = 0;
    return ProbeSceneVersion(lines, lineNumber);
}

SceneVersionProbe ProbeSceneVersion(Core::LineReader& source, std::uint64_t& lineNumber)
{
    std::string_view line;
    do
    {
        if (!source.ReadLine(line))
        {
            return {};
        }
        ++lineNumber;
    } while (line.empty() || line.front() == '#');

    Core::TokenReader tokens(line);
    SceneVersionProbe probe;
    probe.found = tokens.ReadWord() == "scene_version" && tokens.Read(probe.version);
    return probe.found ? probe : SceneVersionProbe();
}

} // namespace Vornu::Scene
