#include "engine/core/Guid.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace Vornu::Core
{
namespace
{

std::string StrictFailure(std::string_view text)
{
    try
    {
        ParseStableGuid(text);
    }
    catch (const std::runtime_error& error)
    {
        return error.what();
    }
    return "none";
}

TEST(Guid, TextFormIsLowerCaseInGroups)
{
    const Guid guid{0x6F1C2A903B7D4E21ull, 0x9C550D2F7A1B8E34ull};
    EXPECT_EQ(guid.ToString(), "6f1c2a90-3b7d-4e21-9c55-0d2f7a1b8e34");
    EXPECT_EQ(Guid{}.ToString(), "00000000-0000-0000-0000-000000000000");
    EXPECT_EQ(Guid::TryParse("6F1C2A90-3B7D-4E21-9C55-0D2F7A1B8E34"), guid);
    EXPECT_EQ(Guid::TryParse("--6f1c2a903b7d4e219c550d2f7a1b8e3-4-"), guid);
    EXPECT_EQ(Guid::TryParse("6f1c2a903b7d4e219c550d2f7a1b8e3"), std::nullopt);
    EXPECT_EQ(Guid::TryParse("6f1c2a903b7d4e219c550d2f7a1b8e344"), std::nullopt);
    EXPECT_EQ(Guid::TryParse("6f1c2a903b7d4e219c550d2f7a1b8e3g"), std::nullopt);
    EXPECT_EQ(Guid::TryParse(""), std::nullopt);
}

TEST(Guid, StrictParserNamesTheFirstFault)
{
    const std::string digits = "6f1c2a903b7d4e219c550d2f7a1b8e34";
    EXPECT_EQ(ParseStableGuid(""), Guid{});
    EXPECT_EQ(ParseStableGuid(digits), ParseStableGuid("6F1C2A90-3B7D-4E21-9C55-0D2F7A1B8E34"));
    EXPECT_EQ(StrictFailure(digits.substr(1)), "Invalid stable GUID length.");
    EXPECT_EQ(StrictFailure(digits + "0"), "Invalid stable GUID length.");
    EXPECT_EQ(StrictFailure("6f1c2a9013b7d-4e21-9c55-0d2f7a1b8e34"), "Invalid stable GUID separator.");
    EXPECT_EQ(StrictFailure("6g1c2a9013b7d-4e21-9c55-0d2f7a1b8e34"), "Invalid stable GUID digit.");
    EXPECT_EQ(StrictFailure("6f1c2a903b7d4e219c550d2f7a1b8e3g"), "Invalid stable GUID digit.");
    EXPECT_EQ(StrictFailure("-f1c2a903b7d4e219c550d2f7a1b8e34"), "Invalid stable GUID digit.");
}

TEST(Guid, GeneratedGuidsAreVersionFourAndDiffer)
{
    Guid previous;
    for (int i = 0; i < 1000; ++i)
    {
        const Guid guid = Guid::Generate();
        const std::string text = guid.ToString();
        EXPECT_EQ(text[14], '4');
        EXPECT_NE(std::string("89ab").find(text[19]), std::string::npos);
        EXPECT_NE(guid, previous);
        previous = guid;
    }
}

TEST(Guid, NamesGiveTheSameGuidInEveryRun)
{
    // The empty name gives the two start values with the version and the variant put in.
    EXPECT_EQ(GuidFromName("").ToString(), "cbf29ce4-8422-5325-8000-0100000001b3");
    EXPECT_EQ(GuidFromName("Root"), GuidFromName("Root"));
    EXPECT_NE(GuidFromName("Root"), GuidFromName("tooR"));
    EXPECT_EQ(GuidFromName("Root").ToString()[14], '5');
}

} // namespace
} // namespace Vornu::Core
