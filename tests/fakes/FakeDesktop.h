#pragma once

#include "platform/Alerts.h"
#include "platform/Appearance.h"
#include "platform/CommandChannel.h"
#include "platform/FileManager.h"
#include "platform/FilePanels.h"
#include "platform/ForeignWindows.h"
#include "platform/LoginItems.h"
#include "platform/Pasteboard.h"
#include "platform/Screens.h"

#include <QStringList>

#include <atomic>

namespace quillnest
{

/// A clipboard of this test's own.
class FakePasteboard : public Pasteboard
{
public:
    int changeCount() const override { return m_changeCount; }
    std::optional<QString> string() const override { return m_string; }
    bool isSecret() const override { return m_isSecret; }
    void setString(const QString &text) override { put(text); }

    /// What another program does: puts text, or with nothing a picture or the like.
    void put(std::optional<QString> text, bool isSecret = false)
    {
        m_string = std::move(text);
        m_isSecret = isSecret;
        ++m_changeCount;
    }

private:
    int m_changeCount = 0;
    bool m_isSecret = false;
    std::optional<QString> m_string;
};

/// One screen of 1920 by 1080 with a panel of 30 points at its top, until a test says otherwise.
class FakeScreens : public Screens
{
public:
    std::vector<ScreenInfo> all() const override { return screens; }
    bool isComposited() const override { return composited; }
    void declareShadow(quintptr, QSize size, QMargins margins, int, double) override
    {
        shadows.append(QRect(QPoint(0, 0), size).marginsRemoved(margins));
    }
    bool keepsKeyboard(quintptr) const override { return keepsKeys; }

    bool isMouseButtonDown() const override { return buttonDown; }

    bool composited = true;
    bool buttonDown = false;
    bool keepsKeys = false;
    /// The frames inside the shadows that were declared.
    QList<QRect> shadows;
    std::vector<ScreenInfo> screens{{QRect(0, 0, 1920, 1080), QRect(0, 30, 1920, 1050), 1.0}};
};

/// A command channel with no other process on it: what is posted comes back at once, if somebody listens.
class FakeCommandChannel : public CommandChannel
{
    Q_OBJECT

public:
    bool listen() override
    {
        m_listening = reachable;
        return reachable;
    }
    bool post(const QString &command) override
    {
        if (!reachable)
            return false;
        posted.append(command);
        if (m_listening)
            Q_EMIT received(command);
        return true;
    }

    QStringList posted;
    bool reachable = true;

private:
    bool m_listening = false;
};

class FakeAppearance : public Appearance
{
    Q_OBJECT

public:
    bool isDark() const override { return m_dark; }
    void setDark(bool dark)
    {
        if (m_dark.exchange(dark) != dark)
            Q_EMIT changed();
    }

private:
    std::atomic_bool m_dark = false;
};

/// A user who answers every alert with the same button, or not at all.
class FakeAlerts : public Alerts
{
public:
    void ask(const Alert &alert, std::function<void(int button)> answer) override
    {
        asked.push_back(alert);
        if (button)
            answer(*button);
    }

    std::vector<Alert> asked;
    std::optional<int> button;
};

/// A user who chooses the same files at every open panel.
class FakeFilePanels : public FilePanels
{
public:
    void open(const OpenPanel &panel, std::function<void(const QList<QUrl> &)> answer) override
    {
        opened.push_back(panel);
        answer(chosen);
    }

    std::vector<OpenPanel> opened;
    QList<QUrl> chosen;
};

class FakeFileManager : public FileManager
{
public:
    void reveal(const QString &path, std::function<void(bool)> done) override
    {
        revealed.append(path);
        done(isThere);
    }

    QStringList revealed;
    bool isThere = true;
};

class FakeLoginItems : public LoginItems
{
public:
    Status status() const override { return current; }
    std::optional<QString> set(bool enabled) override
    {
        requests.push_back(enabled);
        if (!failure)
            current = enabled ? Status::enabled : Status::notRegistered;
        return failure;
    }

    Status current = Status::notRegistered;
    std::optional<QString> failure;
    std::vector<bool> requests;
};

/// One other program with its windows.
class FakeForeignWindows : public ForeignWindows
{
public:
    bool isTrusted() const override { return trusted; }
    void askForTrust() override { ++prompts; }
    bool isRunning(const QString &bundleIdentifier) const override { return bundleIdentifier == running; }
    std::vector<WindowId> windows(const QString &bundleIdentifier) const override
    {
        return bundleIdentifier == running ? ids : std::vector<WindowId>();
    }
    bool setSize(WindowId window, QSize size) override
    {
        steps.append(QStringLiteral("%1 size %2x%3").arg(window).arg(size.width()).arg(size.height()));
        return takesSizes;
    }
    bool setPosition(WindowId window, QPoint position) override
    {
        steps.append(QStringLiteral("%1 position %2,%3").arg(window).arg(position.x()).arg(position.y()));
        return takesPositions;
    }
    void activate(WindowId window) override { steps.append(QStringLiteral("%1 active").arg(window)); }

    bool trusted = true;
    int prompts = 0;
    QString running;
    std::vector<WindowId> ids;
    bool takesSizes = true;
    bool takesPositions = true;
    QStringList steps;
};

} // namespace quillnest
