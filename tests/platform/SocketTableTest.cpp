#include "platform/linux/SocketTable.h"

#include "platform/AnotherUser.h"
#include "platform/posix/PosixLocalListener.h"
#include "platform/posix/PosixLocalSockets.h"

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{
constexpr uid_t user = 1000;

/// A line as the kernel prints it. Ports are 5037 (13AD) and 40000 (9C40).
QByteArray row(const char *local, const char *remote, const char *state, uid_t owner, int inode = 4711)
{
    return QByteArray("   0: ") + local + " " + remote + " " + state + " 00000000:00000000 00:00000000 00000000  "
        + QByteArray::number(owner) + "        0 " + QByteArray::number(inode) + " 1 0000000000000000 100 0 0 10 0\n";
}

const char *const head
    = "  sl  local_address rem_address   st tx_queue rx_queue tr tm->when retrnsmt   uid  timeout inode\n";
const char *const nowhere = "00000000:0000";
const char *const nowhere6 = "00000000000000000000000000000000:0000";

SocketOwner listener(const QByteArray &rows)
{
    return SocketTable(head + rows, user).listenerOwner(5037);
}

SocketOwner connection(const QByteArray &rows)
{
    return SocketTable(head + rows, user).connectionOwner(40000, 5037);
}
} // namespace

TEST(SocketTableTest, aListenerIsTheUsersOwnTheAdministratorsOrAStrangers)
{
    EXPECT_EQ(listener(row("0100007F:13AD", nowhere, "0A", user)), SocketOwner::trusted);
    EXPECT_EQ(listener(row("0100007F:13AD", nowhere, "0A", 0)), SocketOwner::trusted);
    EXPECT_EQ(listener(row("0100007F:13AD", nowhere, "0A", 1001)), SocketOwner::another);
    EXPECT_EQ(listener(row("00000000:13AD", nowhere, "0A", 1001)), SocketOwner::another);
    EXPECT_EQ(listener(row("00000000000000000000000001000000:13AD", nowhere6, "0A", 1001)), SocketOwner::another);
    EXPECT_EQ(listener(row("00000000000000000000000000000000:13AD", nowhere6, "0A", 1001)), SocketOwner::another);
    EXPECT_EQ(listener(row("0000000000000000FFFF000000000000:13AD", nowhere6, "0A", 1001)), SocketOwner::another);
    // One stranger is enough, in whichever order.
    const auto own = row("0100007F:13AD", nowhere, "0A", user);
    const auto stranger = row("00000000000000000000000001000000:13AD", nowhere6, "0A", 1001);
    EXPECT_EQ(listener(own + stranger), SocketOwner::another);
    EXPECT_EQ(listener(stranger + own), SocketOwner::another);
}

TEST(SocketTableTest, otherPortsOtherMachinesAndConnectionsAreNoListener)
{
    EXPECT_EQ(listener({}), SocketOwner::nobody);
    EXPECT_EQ(listener(row("0100007F:13AE", nowhere, "0A", 1001)), SocketOwner::nobody);
    EXPECT_EQ(listener(row("0101A8C0:13AD", nowhere, "0A", 1001)), SocketOwner::nobody);
    EXPECT_EQ(listener(row("0100007F:13AD", "0100007F:9C40", "01", 1001)), SocketOwner::nobody);
    EXPECT_EQ(listener("garbage\n\n 0: a b c d\n"), SocketOwner::nobody);
}

TEST(SocketTableTest, aConnectionHasTheOwnerOfItsOtherEnd)
{
    const auto ours = row("0100007F:13AD", "0100007F:9C40", "01", user);
    EXPECT_EQ(connection(ours + row("0100007F:9C40", "0100007F:13AD", "01", user)), SocketOwner::trusted);
    EXPECT_EQ(connection(ours + row("0100007F:9C40", "0100007F:13AD", "01", 1001)), SocketOwner::another);
    const auto mapped
        = row("0000000000000000FFFF00000100007F:9C40", "0000000000000000FFFF00000100007F:13AD", "01", 1001);
    EXPECT_EQ(connection(ours + mapped), SocketOwner::another);
    EXPECT_EQ(connection(ours), SocketOwner::nobody);
}

TEST(SocketTableTest, aConnectionThatItsProcessHasClosedIsNobodys)
{
    // The kernel no longer knows whose it was, and prints the administrator's number.
    EXPECT_EQ(connection(row("0100007F:9C40", "0100007F:13AD", "05", 0, 0)), SocketOwner::nobody);
}

TEST(SocketTableTest, aHostThatDoesNotTellIsTrusted)
{
    EXPECT_EQ(SocketTable(std::nullopt, user).listenerOwner(5037), SocketOwner::trusted);
    EXPECT_EQ(SocketTable(std::nullopt, user).connectionOwner(40000, 5037), SocketOwner::trusted);
}

TEST(SocketTableTest, thisMachinesTablesTellOwnListeners)
{
    const PosixLocalListener own;
    EXPECT_EQ(PosixLocalSockets().listenerOwner(own.port()), SocketOwner::trusted);
}

TEST(SocketTableTest, anotherUsersListenerIsSeen)
{
    if (!AnotherUser::canBeMade())
        GTEST_SKIP() << "needs root";
    const auto port = PosixLocalListener().port();
    EXPECT_EQ(PosixLocalSockets().listenerOwner(port), SocketOwner::nobody);
    const auto stranger = AnotherUser::listening(port);
    ASSERT_TRUE(stranger.isReady);
    EXPECT_EQ(PosixLocalSockets().listenerOwner(port), SocketOwner::another);
}
