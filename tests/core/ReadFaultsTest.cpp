#include "engine/core/ReadFaults.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace Vornu::Platform
{
namespace
{

TEST(ReadFaults, AWatchSeesTheFirstThatConcernsItsFolder)
{
    NoteReadFault("/content/before", EIO);
    const ReadFaultWatch watch;
    for (const int absence : {0, ENOENT, ENOTDIR, ENAMETOOLONG, ELOOP})
    {
        NoteReadFault("/content/none", absence);
    }
    NoteReadFault("/contents/closed", EACCES);
    EXPECT_EQ(watch.First("/content"), "");
    NoteReadFault("/content/closed", EACCES);
    NoteReadFault("/elsewhere", EMFILE);
    EXPECT_EQ(watch.First("/content"), "/content/closed: Permission denied");
    EXPECT_EQ(watch.First("/contents"), "/contents/closed: Permission denied");
    EXPECT_EQ(watch.First("/other"), "/elsewhere: Too many open files");
    EXPECT_EQ(ReadFaultWatch().First("/content"), "");
}

TEST(ReadFaults, AForgottenFaultStillCounts)
{
    const ReadFaultWatch watch;
    for (int i = 0; i < 1000; ++i)
    {
        NoteReadFault("/elsewhere", EACCES);
    }
    EXPECT_EQ(watch.First("/content"), "/content: Input/output error");
}

} // namespace
} // namespace Vornu::Platform
