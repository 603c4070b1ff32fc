#pragma once

#include "engine/assets/manager/AssetManager.h"
#include "engine/core/logging/Logger.h"
#include "engine/scene/Scene.h"
#include "engine/scene/files/SceneFile.h"
#include "engine/scene/legacy/LegacyReader.h"
#include "engine/scene/registration/ComponentRegistry.h"
#include "tests/core/TestFolder.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <iomanip>
#include <set>
#include <sstream>
#include <string>

namespace Vornu::Test
{

/// Reads texts as scene files, with three built-in assets to refer to.
class LegacyText
{
public:
    LegacyText() : settings_("VORNU_USER_SETTINGS_DIR", (folder_ / "settings").string())
    {
        Core::GetLogger().SetConsoleEnabled(false); // other tests read the history
        assets.Initialize(folder_.Path(), Assets::AssetMountMode::ReadOnly);
        assets.GetRegistry().RegisterBuiltin(Assets::AssetKind::Texture, "Sky");
        assets.GetRegistry().RegisterBuiltin(Assets::AssetKind::Material, "Red");
        assets.GetRegistry().RegisterBuiltin(Assets::AssetKind::Mesh, "Box");
    }

    ~LegacyText() { Core::GetLogger().SetConsoleEnabled(true); }
    LegacyText(const LegacyText&) = delete;
    LegacyText& operator=(const LegacyText&) = delete;

    /// The error of the legacy reader; empty if it has filled `scene`.
    std::string Read(std::string_view text)
    {
        std::string error = "not cleared";
        const auto path = folder_.Write("a.vscene", text);
        const bool loaded = Scene::Legacy::Load(path, scene, assets, &error);
        EXPECT_EQ(loaded, error.empty());
        return error;
    }

    /// The text in the current format, or "<error>".
    std::string Convert(std::string_view text)
    {
        std::string error = Read(text);
        return error.empty() ? Save() : "<" + error + ">";
    }

    std::string Save()
    {
        std::string error;
        return Scene::SaveScene(folder_ / "b.vscene", scene, assets, &error) ? folder_.Read("b.vscene")
                                                                             : "<" + error + ">";
    }

    /// The values of one component of the converted text that differ from its defaults, in file order, as
    /// "name=value;". Elements of arrays have no name.
    std::string Changes(std::string_view text, const std::string& component)
    {
        const std::string converted = Convert(text);
        if (converted.front() == '<')
        {
            return converted;
        }
        const std::string defaults = DefaultText(component);
        const std::vector<std::string> known = Block(defaults, component);
        EXPECT_NE(defaults.find('"' + component + '"'), std::string::npos);
        std::string changes;
        const std::set<std::string> common(known.begin(), known.end());
        for (const std::string& value : Block(converted, component))
        {
            changes += common.contains(value) ? "" : value + ";";
        }
        return changes;
    }

    Scene::Scene scene;
    Assets::AssetManager assets;

private:
    std::string DefaultText(const std::string& component)
    {
        scene = Scene::Scene();
        const Scene::Entity entity = scene.CreateEntity("");
        for (const auto& entry : Scene::ComponentRegistry::Instance().Entries())
        {
            if (entry->HasSceneRecords() && entry->records.front().name == component)
            {
                entry->add(scene, entity);
            }
        }
        return Save();
    }

    static std::vector<std::string> Block(const std::string& text, const std::string& component)
    {
        std::vector<std::string> values;
        std::istringstream lines(
            text.substr(std::min(text.size(), text.find("component_schema \"" + component + '"'))));
        std::string line;
        std::getline(lines, line);
        for (int depth = 1; depth > 0 && std::getline(lines, line);)
        {
            std::istringstream words(line);
            std::string kind;
            std::string first;
            std::string second;
            words >> kind >> std::quoted(first) >> std::quoted(second);
            depth += kind == "object_property" || kind == "array_property";
            depth -= kind == "end_component_schema" || kind == "end_array";
            if (kind == "property" || kind == "value")
            {
                values.push_back(kind == "value" ? first : first + "=" + second);
            }
        }
        return values;
    }

    TestFolder folder_;
    ScopedVariable settings_;
};

/// The records of one entity, and what they change in a component.
struct Row
{
    std::string records;
    std::string changes;
};

inline void ExpectRows(const std::string& component, std::initializer_list<Row> rows, int version = 3)
{
    LegacyText legacy;
    for (const Row& row : rows)
    {
        const std::string text = "scene_version " + std::to_string(version) + "\nentity \"\" \"E\"\n";
        EXPECT_EQ(legacy.Changes(text + row.records + "\n", component), row.changes) << row.records;
    }
}

/// The same for values among others, such as those of the elements of a list: each must be there, in order.
inline void ExpectParts(const std::string& component, std::initializer_list<Row> rows, int version = 3)
{
    LegacyText legacy;
    for (const Row& row : rows)
    {
        const std::string text = "scene_version " + std::to_string(version) + "\nentity \"\" \"E\"\n";
        std::string changes(1, ';');
        changes += legacy.Changes(text + row.records + "\n", component);
        std::istringstream parts(row.changes);
        std::size_t at = 0;
        for (std::string part; at != std::string::npos && std::getline(parts, part, ';');)
        {
            at = changes.find(";" + part + ";", at);
        }
        EXPECT_NE(at, std::string::npos) << row.records << "\n" << changes << "\nlacks " << row.changes;
    }
}

} // namespace Vornu::Test
