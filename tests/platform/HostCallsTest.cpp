#include "platform/posix/HostCalls.h"

#include <fcntl.h>

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{
bool isInherited(const Descriptor &descriptor)
{
    return (::fcntl(descriptor.get(), F_GETFD) & FD_CLOEXEC) == 0;
}
} // namespace

TEST(HostCallsTest, noChildInheritsAPipeOrASocket)
{
    const auto pipe = newPipe();
    ASSERT_TRUE(pipe.readEnd);
    EXPECT_FALSE(isInherited(pipe.readEnd));
    EXPECT_FALSE(isInherited(pipe.writeEnd));
    const auto socket = newStreamSocket();
    ASSERT_TRUE(socket);
    EXPECT_FALSE(isInherited(socket));
}
