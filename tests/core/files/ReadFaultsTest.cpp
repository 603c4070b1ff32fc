#include "engine/core/files/ReadFaults.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace Vornu::Platform
{
namespace
{

TEST(ReadFaults, AWatchSeesTheFirstThatConcernsItsFolder)
{
    NoteReadFault("/content/before", EIO);
    const ReadFaultWatch content("/content");
    const ReadFaultWatch contents("/contents");
    for (const int absence : {0, ENOENT, ENOTDIR, ENAMETOOLONG, ELOOP, EISDIR})
    {
        NoteReadFault("/content/none", absence);
    }
    for (int i = 0; i < 1000; ++i)
    {
        NoteReadFault("/contents/closed", EACCES);
    }
    EXPECT_EQ(content.First(), "");
    EXPECT_EQ(contents.First(), "/contents/closed: Permission denied");
    {
        const ReadFaultWatch other("/other");
        NoteReadFault("/elsewhere", EMFILE);
        NoteReadFault("/content/later", EIO);
        EXPECT_EQ(other.First(), "/elsewhere: Too many open files");
    }
    EXPECT_EQ(content.First(), "/elsewhere: Too many open files");
    EXPECT_EQ(ReadFaultWatch("/content").First(), "");
}

} // namespace
} // namespace Vornu::Platform
