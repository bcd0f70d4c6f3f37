#include "endtoend/EndToEnd.h"

#include <QElapsedTimer>

namespace quillnest::driver
{

/// Uninstalling as a user does it: with the other button of the mouse.
class UninstallTest : public EndToEnd
{
protected:
    /// Opens the context menu of the only tile, whose app runs, and takes the last entry.
    void chooseUninstall()
    {
        // An earlier panel may still be there, and a menu that opens on it goes with it.
        const auto shown = program.log().count(QStringLiteral("home page shown"));
        program.post(QStringLiteral("home"));
        waitFor(QStringLiteral("the panel"), 10, [this, shown] {
            return program.log().count(QStringLiteral("home page shown")) > shown;
        });
        const auto tile = program.waitForTile(QStringLiteral("Tide")).center();
        // A click that comes in the moment in which the panel gets the keyboard may be lost.
        QElapsedTimer clicked;
        waitFor(QStringLiteral("the menu"), 20, [&] {
            if (isMenuShown())
                return true;
            if (!clicked.isValid() || clicked.elapsed() > 2000) {
                desktop.click(tile, 3);
                clicked.start();
            }
            return false;
        });
        // Upwards from nowhere is the last one.
        desktop.key(QStringLiteral("Up"));
        desktop.key(QStringLiteral("Return"));
    }

    /// Whether the program has a visible window of this type of the window manager's.
    bool isShown(const QString &type) const
    {
        const auto script = QStringLiteral("for window in $(xdotool search --onlyvisible --class quillnest); do "
                                           "xprop -id $window _NET_WM_WINDOW_TYPE; done | grep -c \"$1\" || true");
        return desktop.run(QStringLiteral("sh"), {QStringLiteral("-c"), script, QStringLiteral("sh"), type}).trimmed()
            != "0";
    }

    /// Whether a window that the manager leaves alone is shown which is higher than a tool tip, for that is one, too.
    bool isMenuShown() const
    {
        const auto script = QStringLiteral(
            "for window in $(xdotool search --onlyvisible --class quillnest); do xwininfo -id $window | "
            "awk '/Height:/ {height = $2} /Override Redirect State: yes/ {menu = 1} "
            "END {if (menu && height > 150) print}'; done | grep -c '' || true");
        return desktop.run(QStringLiteral("sh"), {QStringLiteral("-c"), script}).trimmed() != "0";
    }

    void waitForQuestion(bool shown) const
    {
        waitFor(QStringLiteral("the question to come or go"), 10, [this, shown] {
            return isShown(QStringLiteral("TYPE_DIALOG")) == shown;
        });
    }

    bool isInstalled() const
    {
        return program.device()
            .value(QStringLiteral("packages"))
            .toObject()
            .contains(QStringLiteral("app.quillnest.samples.tide"));
    }
};

TEST_F(UninstallTest, anAppIsUninstalledFromTheDeviceAfterTheUserHasSaidSo)
{
    program.start();
    openTide();
    ASSERT_TRUE(isInstalled());
    chooseUninstall();
    waitForQuestion(true);
    // What destroys isn't what the Return key does by itself.
    desktop.key(QStringLiteral("Return"));
    waitForQuestion(false);
    EXPECT_TRUE(isInstalled());
    EXPECT_EQ(program.state().value(QStringLiteral("apps")).toArray().size(), 1);

    chooseUninstall();
    waitForQuestion(true);
    desktop.key(QStringLiteral("Tab"));
    desktop.key(QStringLiteral("Return"));
    waitForStatus(QStringLiteral("Uninstalled Tide"));
    EXPECT_FALSE(isInstalled());
    EXPECT_TRUE(program.state().value(QStringLiteral("apps")).toArray().isEmpty());
    EXPECT_TRUE(windows(program.state()).isEmpty());
    waitForLog(QStringLiteral("Uninstall app.quillnest.samples.tide: Success"));
}

TEST_F(UninstallTest, aQuestionOnTheScreenDoesNotHoldTheEndUp)
{
    program.start();
    openTide();
    chooseUninstall();
    waitForQuestion(true);
    EXPECT_EQ(program.quit(12), 0);
    program.start();
    EXPECT_EQ(program.state().value(QStringLiteral("apps")).toArray().size(), 1);
}

} // namespace quillnest::driver
