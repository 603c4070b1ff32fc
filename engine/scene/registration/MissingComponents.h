#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

/// Components that files name and this build doesn't have: those of plugins that aren't loaded, whose records
/// are kept, and those that the engine had once, whose records are dropped.
namespace Vornu::Scene
{

/// Whether a record of an unknown name belongs to a plugin: at least 3 bytes that hold a dot, the first a
/// letter, every one a letter, a digit, `-`, `.` or `_`.
bool IsPluginRecordName(std::string_view name) noexcept;

/// Whether the engine once had a component of the name.
bool IsRemovedComponent(std::string_view name) noexcept;

/// Warns that the component's data is kept without being read; once a name in each process. Safe from any
/// thread.
void ReportUnloadedPluginComponent(const std::string& name);

/// Warns that the data of a removed component is skipped; once a name in each process. Safe from any thread.
void ReportRemovedComponent(std::string_view name);

/// Warns that entities are saved with their component of the name, and not with the records that were kept
/// for them while its plugin wasn't loaded.
void ReportSupersededRecords(std::string_view name);

/// Holds back the warnings of a load until it is known to be one worth warning about.
class MissingComponentReport
{
public:
    void Note(std::string_view name);

    /// Gives the warnings in the order in which the names came first.
    void Send() const;

private:
    std::vector<std::string> names_;
    std::set<std::string, std::less<>> seen_;
};

} // namespace Vornu::Scene
