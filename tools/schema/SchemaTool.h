#pragma once

#include <string_view>
#include <vector>

namespace Vornu::Schema
{

/// Runs the program with the arguments behind its name; prints to the standard streams. Gives the exit code.
int RunSchemaTool(const std::vector<std::string_view>& arguments);

} // namespace Vornu::Schema
