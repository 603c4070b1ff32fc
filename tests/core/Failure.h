#pragma once

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace Vornu::Test
{

/// The text of the fault that a call throws; "none" when it throws nothing.
template<class Fault = std::runtime_error, class Function>
std::string FailureOf(Function function)
{
    try
    {
        function();
    }
    catch (const Fault& fault)
    {
        return fault.what();
    }
    return "none";
}

} // namespace Vornu::Test
