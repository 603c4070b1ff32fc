#pragma once

#include "engine/core/FunctionRef.h"

#include <stdexcept>
#include <string>

namespace Vornu::Scene
{

/// A failure of a load whose text goes to the caller as it stands; all others get "Failed to load scene: " in
/// front.
class LoadFault : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Runs a load and turns what it throws into a result: false, with the text in `error` where given.
bool CatchLoadFaults(std::string* error, Core::FunctionRef<void()> load);

} // namespace Vornu::Scene
