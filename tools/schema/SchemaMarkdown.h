#pragma once

#include "tools/schema/SchemaTables.h"

#include <string>

namespace Vornu::Schema
{

/// What `SchemaJson` prints, as a page for readers: numbers in their shortest form, and columns only where a
/// type has something to say in them.
std::string SchemaMarkdown(const SchemaTables& tables);

} // namespace Vornu::Schema
