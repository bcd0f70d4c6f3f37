#include "core/AndroidStatus.h"

#include "StoreFixture.h"

using namespace quillnest;

namespace
{
class AndroidStatusTest : public StoreFixture
{
};
} // namespace

TEST_F(AndroidStatusTest, atTheStartTheDeviceIsAsked)
{
    EXPECT_EQ(store->androidState(), AppLibraryStore::AndroidState::sleeping);
    device.listed = true;
    device.booted = true;
    makeStore();
    EXPECT_EQ(store->androidState(), AppLibraryStore::AndroidState::ready);
    QFile::remove(paths.systemImage());
    makeStore();
    EXPECT_EQ(store->androidState(), AppLibraryStore::AndroidState::notSetUp);
}

TEST_F(AndroidStatusTest, whenTheDeviceIsToldToStopItSleeps)
{
    device.listed = true;
    device.booted = true;
    makeStore();
    Q_EMIT notifications->runtimeChanged();
    EXPECT_EQ(store->androidState(), AppLibraryStore::AndroidState::sleeping);
}

TEST_F(AndroidStatusTest, anAnswerThatComesDuringAStartChangesNothing)
{
    const auto services = this->services();
    AndroidStatus android(services);
    android.refresh();
    android.set(AndroidStatus::State::starting);
    fakes.settle();
    EXPECT_EQ(android.state(), AndroidStatus::State::starting);
    android.refresh();
    fakes.settle();
    EXPECT_EQ(android.state(), AndroidStatus::State::starting);
}

TEST_F(AndroidStatusTest, aRuntimeThatIsIncompleteOverridesEvenAStart)
{
    const auto services = this->services();
    AndroidStatus android(services);
    android.set(AndroidStatus::State::starting);
    QFile::remove(paths.systemImage());
    android.refresh();
    EXPECT_EQ(android.state(), AndroidStatus::State::notSetUp);
}

TEST_F(AndroidStatusTest, onlyAChangeIsTold)
{
    const auto services = this->services();
    AndroidStatus android(services);
    int changes = 0;
    QObject::connect(&android, &AndroidStatus::changed, &android, [&changes] { ++changes; });
    android.set(AndroidStatus::State::sleeping);
    EXPECT_EQ(changes, 0);
    android.set(AndroidStatus::State::ready);
    android.set(AndroidStatus::State::ready);
    EXPECT_EQ(changes, 1);
}

TEST_F(AndroidStatusTest, itMayGoWhileTheDeviceIsAsked)
{
    const auto services = this->services();
    auto android = std::make_unique<AndroidStatus>(services);
    android->refresh();
    android.reset();
    fakes.settle();
}
