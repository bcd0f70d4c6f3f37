#pragma once

#include "driver/ProgramUnderTest.h"

namespace quillnest::driver
{

/// The screen on which a program without a runtime asks for consent and shows the download, used by the mouse.
class SetupScreen
{
public:
    explicit SetupScreen(ProgramUnderTest &program) : m_program(program) { }

    /// Opens the panel, on which the screen is.
    void open();
    /// Goes through the licence sheet and consents there.
    void consent();
    /// Clicks the button of the failure.
    void tryAgain();

    /// "phase", "text" and "fraction" as the program reports them.
    QJsonObject state() const;
    void waitForPhase(const QString &phase, double seconds = 30) const;
    /// Waits until it has stopped with words for the user, and gives them.
    QString failure(double seconds = 30) const;
    /// What it wrote down on the way.
    QString log() const;
    /// The panel as it is on the screen.
    QImage picture() const;

private:
    QRect panel() const;
    /// Clicks the one button in the colour that draws the eye.
    void clickProminent();

    ProgramUnderTest &m_program;
};

} // namespace quillnest::driver
