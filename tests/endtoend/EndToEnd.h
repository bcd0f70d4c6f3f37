#pragma once

#include "driver/ProgramUnderTest.h"

#include <QJsonArray>

#include <gtest/gtest.h>

namespace quillnest::driver
{

/// One program on one desktop, with the stand-in device ready to be booted.
class EndToEnd : public ::testing::Test
{
protected:
    EndToEnd() : EndToEnd(TestDesktop::Options{}) { }
    explicit EndToEnd(TestDesktop::Options options) : desktop(options), program(desktop) { }

    ~EndToEnd() override
    {
        // What the program said is what explains a failure.
        if (HasFailure())
            std::fprintf(
                stderr, "---- log\n%s---- output\n%s----\n", qUtf8Printable(program.log()),
                program.output().constData());
    }

    static QJsonArray windows(const QJsonObject &state) { return state.value(QStringLiteral("windows")).toArray(); }

    static QString text(const QJsonObject &object, const char *key)
    {
        return object.value(QLatin1String(key)).toString();
    }

    void set(const QString &key, const QJsonValue &value) const { program.setSetting(key, value); }

    void waitForStatus(const QString &status, double seconds = 30) const
    {
        program.waitForState(
            QStringLiteral("the status \"%1\"").arg(status), seconds, [&status](const QJsonObject &state) {
                return state.value(QStringLiteral("statusMessage")).toString() == status;
            });
    }

    void waitForLog(const QString &text, double seconds = 30) const
    {
        waitFor(QStringLiteral("\"%1\" in the log").arg(text), seconds, [this, &text] {
            return program.log().contains(text);
        });
    }

    /// What adb was called with since `noteAdbCalls`, oldest first.
    QStringList adbCommands() const
    {
        QStringList commands;
        for (const auto &call : program.adbCalls())
            commands += call.arguments;
        return commands;
    }
    qsizetype adbCommands(const QString &part) const { return adbCommands().filter(part).size(); }

    /// Waits until the device was asked that often whether it has booted.
    void waitForLooks(int count) const
    {
        const auto looks = [this] { return adbCommands(QStringLiteral("getprop sys.boot_completed")); };
        const auto before = looks();
        waitFor(QStringLiteral("%1 looks at the device").arg(count), 30, [&] { return looks() >= before + count; });
    }

    void openTide()
    {
        program.addApps({ProgramUnderTest::sample(QStringLiteral("tide"))});
        program.post(QStringLiteral("open:Tide"));
        program.waitForPicture(60);
        waitForKeyboard();
    }

    /// A window paints before the window manager has put it on the screen; a click waits for its focus.
    void waitForKeyboard() const
    {
        program.waitForState(QStringLiteral("the window to get the keyboard"), 10, [](const QJsonObject &state) {
            return windows(state).first()[QStringLiteral("active")].toBool();
        });
    }

    void waitForNoWindow(double seconds = 20) const
    {
        program.waitForState(QStringLiteral("no window"), seconds, [](const QJsonObject &state) {
            return !state.isEmpty() && windows(state).isEmpty();
        });
    }

    /// Waits for pictures that weren't there before.
    void waitForMorePictures() const
    {
        const int shown = program.window().value(QStringLiteral("framesShown")).toInt();
        program.waitForState(QStringLiteral("more pictures"), 15, [shown](const QJsonObject &state) {
            return windows(state).first()[QStringLiteral("framesShown")].toInt() > shown + 3;
        });
    }

    TestDesktop desktop;
    ProgramUnderTest program;
};

} // namespace quillnest::driver
