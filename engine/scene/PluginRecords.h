#pragma once

#include <string>
#include <string_view>

namespace Vornu::Scene
{

/// Whether a record of an unknown name belongs to a plugin: at least 3 bytes that hold a dot, the first a
/// letter, every one a letter, a digit, `-`, `.` or `_`.
bool IsPluginRecordName(std::string_view name) noexcept;

/// Warns that the component's data is kept without being read; once a name in each process. Safe from any
/// thread.
void ReportUnloadedPluginComponent(const std::string& name);

} // namespace Vornu::Scene
