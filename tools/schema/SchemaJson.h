#pragma once

#include "tools/schema/SchemaTables.h"

#include <string>

namespace Vornu::Schema
{

/// Everything that is registered, in order of registration, as one JSON object of the arrays `assetTypes`,
/// `enums`, `types` and `components`. Keys that don't apply to a property are left out: `elementKinds` (from
/// the outermost element to the innermost) and `length` of arrays, `enum`, `asset`, `object`, `range`.
std::string SchemaJson(const SchemaTables& tables);

} // namespace Vornu::Schema
