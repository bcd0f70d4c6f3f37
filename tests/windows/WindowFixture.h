#pragma once

#include "base/QuillnestLayout.h"
#include "fakes/FakeLocks.h"
#include "fakes/FakePlatform.h"
#include "windows/AndroidVideoView.h"
#include "windows/AndroidWindowRegistry.h"
#include "windows/AndroidWindowSession.h"
#include "windows/KeyboardFocus.h"
#include "windows/LoopbackDevice.h"
#include "windows/WindowFakes.h"

#include <QAbstractButton>
#include <QTest>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

namespace quillnest
{

const auto package = QStringLiteral("org.example.app");
const auto otherPackage = QStringLiteral("org.example.other");

/// Notes what would be copied.
class FakeTransfer : public FileTransfer
{
public:
    Outcome push(const QList<QUrl> &files, const QString &target, std::optional<int> displayID) override
    {
        for (const auto &file : files)
            pushed.append(QStringLiteral("%1 to %2 on %3").arg(file.fileName(), target).arg(displayID.value_or(-1)));
        return {};
    }

    QStringList pushed;
};

/// Real windows on the test's display, with everything below them scripted.
class WindowFixture : public ::testing::Test
{
protected:
    WindowFixture()
    {
        fakes.platform.video = video;
        fakes.platform.symbols = symbols;
        fakes.platform.profile.developmentScrcpy = fakes.writeFile(QStringLiteral("dev/bin/scrcpy"), "", true);
        fakes.screens->composited = false;
        fakes.screens->screens = {{QRect(0, 0, 1600, 1200), QRect(0, 30, 1600, 1170), 1.0}};
        fakes.processes->on(QStringLiteral("emu avd name"), QByteArray("Quillnest\r\nOK\r\n"));
        log = std::make_shared<QuillnestLog>(
            fakes.clock, fakes.platform.folders.logs, QStringLiteral("quillnest.log"), false);
        const auto commands = std::make_shared<const AndroidCommands>(fakes.platform, log);
        registry = std::make_unique<AndroidWindowRegistry>(
            WindowServices{fakes.platform, log, notifications, commands, locks, transfer});
    }

    ~WindowFixture() override
    {
        registry.reset();
        // Each stream holds its window's renderer, and so does its view.
        for (const auto &renderer : video->renderers)
            EXPECT_TRUE(comesTrue(fakes, [&renderer] { return renderer.use_count() == 1; }))
                << "a stream or a view outlives its window";
        // What is still set keeps the platform, and with it the clock that keeps it.
        while (fakes.clock->advanceToNext())
            fakes.settle();
    }

    AndroidWindowSession &open(QUuid id, const QString &name)
    {
        auto &session
            = registry->open(id, name, QStringLiteral("Example"), [this](const AndroidWindowRegistry::End &end) {
                  ends.push_back(end.error);
                  asked.push_back(end.wasAsked);
              });
        return dynamic_cast<AndroidWindowSession &>(session);
    }
    AndroidWindowSession &open() { return open(appID, package); }
    /// The same, waited for until the window has the keyboard.
    AndroidWindowSession &openKey()
    {
        auto &session = open();
        EXPECT_TRUE(giveKeyboard(fakes, session.panel()));
        return session;
    }

    /// What the window holds.
    static AndroidVideoView &videoView(const AndroidWindowSession &session)
    {
        return *session.panel().findChild<AndroidVideoView *>();
    }

    bool waitFor(const std::function<bool()> &condition) const { return comesTrue(fakes, condition); }

    /// Whether these are the same but for what the desktop rounds windows by at a broken scale.
    static bool isAbout(const QWidget &widget, QSize is, QSize expected)
    {
        const double scale = widget.devicePixelRatioF();
        const int most = scale == std::floor(scale) ? 0 : 1;
        return std::abs(is.width() - expected.width()) <= most && std::abs(is.height() - expected.height()) <= most;
    }
    /// Gives a window a size, and again if the window manager was still busy with an earlier one and took it back.
    bool resize(AndroidWindowSession &session, QSize frame) const
    {
        return waitFor([&session, frame] {
            if (isAbout(session.panel(), videoView(session).size(), frame - QSize(0, 36)))
                return true;
            session.panel().resize(frame);
            return false;
        });
    }
    /// The display that Android is asked for: as many pixels as the picture has, cut to eight.
    static QSize displayFor(const AndroidWindowSession &session)
    {
        const auto pixels = QSizeF(videoView(session).size()) * session.panel().devicePixelRatioF();
        return {static_cast<int>(pixels.width()) / 8 * 8, static_cast<int>(pixels.height()) / 8 * 8};
    }

    /// Another window of the desktop takes the keyboard.
    void takeKeyboard()
    {
        other.setGeometry(900, 700, 200, 100);
        EXPECT_TRUE(giveKeyboard(fakes, other));
    }

    /// Time goes on, with everything that happens on the way.
    void pass(std::chrono::milliseconds duration) const
    {
        for (auto left = duration; left.count() > 0; left -= std::chrono::milliseconds(10)) {
            fakes.clock->advance(std::min(left, std::chrono::milliseconds(10)));
            fakes.settle();
        }
    }

    QAbstractButton *headerButton(AndroidWindowSession &session, const QString &name) const
    {
        for (auto *button : session.panel().findChildren<QAbstractButton *>()) {
            if (button->accessibleName() == name)
                return button;
        }
        throw std::runtime_error("no such button");
    }

    QVariantMap record(const QString &name = package) const
    {
        return fakes.settings->value(QStringLiteral("Quillnest.window.") + name).toMap();
    }
    void setRecord(const QVariantMap &values)
    {
        fakes.settings->setValue(QStringLiteral("Quillnest.window.") + package, values);
    }

    qsizetype forceStops(const QString &name = package) const
    {
        return fakes.processes->count(QStringLiteral("shell am force-stop ") + name);
    }
    QStringList logLines() const { return log->tail(1000).split(QLatin1Char('\n'), Qt::SkipEmptyParts); }
    bool hasLogged(const QString &line) const { return logLines().contains(line); }

    const QUuid appID = QUuid::createUuid();
    const QUuid otherID = QUuid::createUuid();
    FakePlatform fakes = fakePlatform();
    std::shared_ptr<FakeVideo> video = std::make_shared<FakeVideo>();
    std::shared_ptr<FakeSymbols> symbols = std::make_shared<FakeSymbols>();
    std::shared_ptr<ChangeNotifications> notifications = std::make_shared<ChangeNotifications>();
    std::shared_ptr<FakeLocks> locks = std::make_shared<FakeLocks>();
    std::shared_ptr<FakeTransfer> transfer = std::make_shared<FakeTransfer>();
    std::shared_ptr<QuillnestLog> log;
    LoopbackDevice device{fakes};
    QWidget other;
    std::unique_ptr<AndroidWindowRegistry> registry;
    /// What the openers were told.
    std::vector<std::optional<QString>> ends;
    std::vector<bool> asked;
};

} // namespace quillnest
