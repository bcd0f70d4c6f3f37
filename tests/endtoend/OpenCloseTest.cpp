#include "endtoend/EndToEnd.h"

#include <algorithm>
#include <cstdio>

namespace quillnest::driver
{

class OpenCloseTest : public EndToEnd
{
protected:
    OpenCloseTest() : EndToEnd(small()) { }

    static TestDesktop::Options small()
    {
        TestDesktop::Options options;
        options.screen = {1200, 1000};
        options.scale = 1;
        return options;
    }

    void openAndClose() const
    {
        program.post(QStringLiteral("open:Tide"));
        program.waitForPicture(30);
        program.post(QStringLiteral("close-all"));
        waitForNoWindow();
    }

    /// Waits until what a closed window leaves to be done has been done.
    void settle() const
    {
        waitFor(QStringLiteral("the child processes to end"), 20, [this] { return program.children().isEmpty(); });
    }
};

TEST_F(OpenCloseTest, twentyWindowsLeaveNothingBehind)
{
    program.configureDevice({{QStringLiteral("bootSeconds"), 0.2}});
    program.start();
    program.addApps({ProgramUnderTest::sample(QStringLiteral("tide"))});
    // What is made once and kept is there after the first few.
    for (int i = 0; i < 3; ++i)
        openAndClose();
    settle();
    // Threads of the pool that nobody needs end after half a minute.
    const auto threads = program.threads();
    const auto descriptors = program.descriptors();
    const auto memory = program.memory();
    for (int i = 0; i < 19; ++i)
        openAndClose();
    program.post(QStringLiteral("open:Tide"));
    program.waitForPicture(30);
    waitForMorePictures();
    const auto held = program.memory() - memory;
    program.post(QStringLiteral("close-all"));
    waitForNoWindow();
    settle();
    waitFor(QStringLiteral("the threads to end"), 60, [this, threads] { return program.threads() <= threads; });
    try {
        waitFor(QStringLiteral("the descriptors to be closed"), 10, [this, &descriptors] {
            return program.descriptors().size() <= descriptors.size();
        });
    } catch (const DriverError &error) {
        ADD_FAILURE() << error.what() << "\nbefore: " << descriptors.join(QLatin1Char(' ')).toStdString()
                      << "\nnow: " << program.descriptors().join(QLatin1Char(' ')).toStdString();
    }
    const auto grown = program.memory() - memory;
    std::printf(
        "%d threads, %d descriptors; memory %.1f MB, with a window %+.1f MB, after twenty more windows %+.1f MB\n",
        program.threads(), static_cast<int>(program.descriptors().size()), static_cast<double>(memory) / 1e6,
        static_cast<double>(held) / 1e6, static_cast<double>(grown) / 1e6);
#ifndef __SANITIZE_ADDRESS__ // which keeps for a while what was freed
    // The heap keeps what a window took, give or take its slack, in which each of the threads has its part. Twenty
    // windows that left half a megabyte each would show.
    EXPECT_LT(grown, held + 10'000'000);
#endif
    EXPECT_TRUE(program.device().value(QStringLiteral("sessions")).toArray().isEmpty());
}

} // namespace quillnest::driver
