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
    EndToEnd() : program(desktop) { }

    ~EndToEnd() override
    {
        // What the program said is what explains a failure.
        if (HasFailure())
            std::fprintf(
                stderr, "---- log\n%s---- output\n%s----\n", qUtf8Printable(program.log()),
                program.output().constData());
    }

    static QJsonArray windows(const QJsonObject &state) { return state.value(QStringLiteral("windows")).toArray(); }

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

    void openTide()
    {
        program.addApps({ProgramUnderTest::sample(QStringLiteral("tide"))});
        program.post(QStringLiteral("open:Tide"));
        program.waitForPicture(60);
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
