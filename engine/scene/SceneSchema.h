#pragma once

namespace Vornu::Scene
{

/// Registers the whole component schema once per process; later calls do nothing. A failed registration is
/// tried again by the next call. Throws `std::invalid_argument` when the validation of the schema fails. The
/// first call must not run on two threads at once.
void EnsureSceneSchema();

} // namespace Vornu::Scene
