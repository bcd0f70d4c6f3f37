#include "benchmarks/AppWindows.h"

#include <QJsonArray>
#include <QThread>

#include <algorithm>

namespace quillnest::bench
{

void closeWindows(const driver::ProgramUnderTest &program)
{
    program.post(QStringLiteral("close-all"));
    program.waitForState(QStringLiteral("the windows to go"), 30, [](const QJsonObject &state) {
        return !state.isEmpty() && state.value(QStringLiteral("windows")).toArray().isEmpty();
    });
    // The next session must not meet what ends this one on the device.
    driver::waitFor(QStringLiteral("the device's sessions to end"), 30, [&program] {
        const auto device = program.device();
        return !device.isEmpty() && device.value(QStringLiteral("sessions")).toArray().isEmpty();
    });
    QThread::msleep(300);
}

void waitForWindows(const driver::ProgramUnderTest &program, int count, double seconds)
{
    program.waitForState(
        QStringLiteral("%1 windows with pictures").arg(count), seconds, [count](const QJsonObject &state) {
            const auto windows = state.value(QStringLiteral("windows")).toArray();
            return windows.size() == count && std::all_of(windows.begin(), windows.end(), [](const QJsonValue &window) {
                       return window[QStringLiteral("visible")].toBool()
                           && window[QStringLiteral("framesShown")].toInt() > 0;
                   });
        });
}

std::unique_ptr<driver::ProgramUnderTest> programWithTide(driver::TestDesktop &desktop)
{
    auto program = std::make_unique<driver::ProgramUnderTest>(desktop);
    turnSoundOff(*program);
    program->start();
    program->addApps({driver::ProgramUnderTest::sample(QStringLiteral("tide"))});
    // Boots the device and installs the app.
    program->post(QStringLiteral("open:Tide"));
    program->waitForPicture(60);
    closeWindows(*program);
    return program;
}

void turnSoundOff(const driver::ProgramUnderTest &program)
{
    program.setSetting(QStringLiteral("QuillnestForwardAudio"), false);
}

} // namespace quillnest::bench
