#include "engine/scene/Hierarchy.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace Vornu::Scene
{
namespace
{

/// Numbers stand for GUIDs, 0 for the null one.
std::string Check(const std::vector<std::pair<std::uint64_t, std::uint64_t>>& rows)
{
    ParentMap parents;
    for (const auto& [child, parent] : rows)
    {
        parents.InsertOrAssign(Core::Guid{0, child}, Core::Guid{0, parent});
    }
    try
    {
        ValidateHierarchy(parents);
    }
    catch (const std::runtime_error& error)
    {
        return error.what();
    }
    return "valid";
}

TEST(Hierarchy, FirstFaultInMapOrderIsNamed)
{
    const std::string cycle = "Scene hierarchy contains a cycle.";
    const std::string missing = "Scene hierarchy references a missing parent.";
    EXPECT_EQ(Check({}), "valid");
    EXPECT_EQ(Check({{1, 2}, {2, 3}, {3, 0}, {4, 2}}), "valid");
    EXPECT_EQ(Check({{1, 1}}), cycle);
    EXPECT_EQ(Check({{1, 9}}), missing);
    EXPECT_EQ(Check({{5, 0}, {1, 2}, {2, 3}, {3, 2}}), cycle);
    EXPECT_EQ(Check({{1, 1}, {2, 9}}), cycle);
    EXPECT_EQ(Check({{2, 9}, {1, 1}}), missing);
}

TEST(Hierarchy, DeepChainsTakeLinearTime)
{
    // Started at its deepest entity and at its root: each walk must stop where an earlier one came past.
    constexpr std::uint64_t kDepth = 100000;
    std::vector<std::pair<std::uint64_t, std::uint64_t>> down;
    std::vector<std::pair<std::uint64_t, std::uint64_t>> up;
    for (std::uint64_t i = 1; i <= kDepth; ++i)
    {
        down.emplace_back(i, i - 1);
        up.emplace_back(kDepth + 1 - i, kDepth - i);
    }
    EXPECT_EQ(Check(down), "valid");
    EXPECT_EQ(Check(up), "valid");
    up.back().second = kDepth;
    EXPECT_EQ(Check(up), "Scene hierarchy contains a cycle.");
}

} // namespace
} // namespace Vornu::Scene
