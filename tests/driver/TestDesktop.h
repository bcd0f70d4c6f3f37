#pragma once

#include <QImage>
#include <QPoint>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRect>
#include <QSize>
#include <QStringList>
#include <QTemporaryDir>

#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <vector>

namespace quillnest::driver
{

/// Something that was waited for did not happen, or a helper program is missing. The text says what.
class DriverError : public std::runtime_error
{
public:
    explicit DriverError(const QString &text) : std::runtime_error(text.toStdString()) { }
};

/// Polls until `condition` holds; throws DriverError with `what` when it doesn't within `seconds`.
void waitFor(const QString &what, double seconds, const std::function<bool()> &condition);

/// A desktop that is nobody else's: home folder, X server, window manager, session bus, sound server and the port of
/// the adb server. Everything ends with the object, whatever it was doing.
class TestDesktop
{
public:
    struct Options {
        /// In pixels.
        QSize screen{2400, 1800};
        /// Pixels per point.
        double scale = 2;
        bool sound = true;
        /// The settings portal, with GNOME's settings behind it. Without it nobody on the bus answers for the
        /// desktop's appearance, whatever is installed.
        bool portal = false;
    };

    explicit TestDesktop(Options options);
    TestDesktop() : TestDesktop(Options{}) { }
    ~TestDesktop();
    TestDesktop(const TestDesktop &) = delete;
    TestDesktop &operator=(const TestDesktop &) = delete;

    QString home() const { return m_root.filePath(QStringLiteral("home")); }
    double scale() const { return m_options.scale; }
    const QProcessEnvironment &environment() const { return m_environment; }
    /// For whatever is started from now on.
    void setVariable(const QString &name, const QString &value) { m_environment.insert(name, value); }
    qint64 xServerProcess() const { return m_xServer; }

    /// Runs a program on this desktop to its end and gives its standard output; throws for an exit status but 0.
    QByteArray run(const QString &program, const QStringList &arguments) const;

    enum class Output { kept, dropped };

    /// Starts a program on this desktop.
    std::unique_ptr<QProcess>
    start(const QString &program, const QStringList &arguments, Output output = Output::kept) const;

    // Input by the X server's own test extension, at points of the screen.
    void moveMouse(QPointF point) const;
    void click(QPointF point, int button = 1) const;
    void drag(QPointF from, QPointF to) const;
    void type(const QString &text) const;
    void key(const QString &name) const;

    void setClipboard(const QString &text);
    QString clipboard() const;

    /// Ends every process on this desktop with this name, or with any name, whoever started it.
    void endAll(const QByteArray &name = {}) const;

    /// Ends the devices of earlier desktops whose owner was killed before it could.
    static void endDevicesLeftBehind();

    /// What the loudspeaker plays from now on: 48000 Hz, one channel.
    std::vector<std::int16_t> recordSound(double seconds) const;

    // The sound server goes, comes back, stands still and goes on.
    void stopSoundServer();
    void startSoundServer();
    void freezeSoundServer() const;
    void thawSoundServer() const;

    /// A rectangle of the screen, in points, as its pixels are now.
    QImage screenshot(QRect area) const;

    /// How many windows are on the screen, menus among them.
    int shownWindows() const;

private:
    void releaseClipboard();
    void startBus();
    QString soundSocket() const;
    qint64 startService(const QString &program, const QStringList &arguments);

    Options m_options;
    QTemporaryDir m_root;
    QProcessEnvironment m_environment;
    std::vector<std::unique_ptr<QProcess>> m_services;
    std::unique_ptr<QProcess> m_clipboardOwner;
    std::unique_ptr<QProcess> m_soundServer;
    qint64 m_xServer = 0;
};

} // namespace quillnest::driver
