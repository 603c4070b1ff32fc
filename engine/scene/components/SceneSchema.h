#pragma once

namespace Vornu::Scene
{

/// Registers the whole component schema, once per process; later calls do nothing. A failed registration is
/// tried again by the next call. Not for use by two threads at once. Throws `std::invalid_argument` or
/// `std::logic_error`.
void EnsureSceneSchema();

} // namespace Vornu::Scene
