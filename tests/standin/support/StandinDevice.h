#pragma once

#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <functional>
#include <memory>

namespace test
{

/// How a command ended and what it said.
struct Outcome {
    int status = -1;
    QByteArray out; ///< standard output
    QByteArray error;
    QByteArray all() const { return out + error; }
};

/// Looks every few milliseconds until the condition holds; false after the deadline.
bool eventually(const std::function<bool()> &condition, int seconds = 15);

/// A stand-in device of a test's own, reached through the real adb with a server, a home folder and ports of its own.
class StandinDevice
{
public:
    StandinDevice();
    ~StandinDevice();

    /// Set before `boot`; takes effect at the next start.
    QProcessEnvironment environment;

    /// Starts the emulator without waiting for anything but the process.
    void start();
    /// Starts the emulator and waits until it has booted.
    bool boot();
    /// Waits for the process; false when it still runs after the deadline.
    bool waitForExit(int seconds = 10);
    QProcess &emulator() { return *m_emulator; }
    /// One more emulator process with the same environment; waits for its end.
    Outcome runEmulator(const QString &avd, int port) const;

    Outcome adb(const QStringList &arguments, const QByteArray &input = {}) const;
    Outcome shell(const QString &command) const { return adb({QStringLiteral("shell"), command}); }
    QString adbProgram() const { return m_sdk + QStringLiteral("/platform-tools/adb"); }
    Outcome control(const QStringList &words) const;
    QJsonObject state() const;

    QString serial() const { return QStringLiteral("emulator-%1").arg(m_port); }
    int port() const { return m_port; }
    int serverPort() const { return m_serverPort; }
    QString folder() const { return m_folder.path(); }
    QString avdFolder() const { return m_folder.path() + QStringLiteral("/avd/Test.avd"); }
    /// Writes an AVD for the API level; the device's own one is "Test".
    void writeAvd(const QString &name, int api) const;

private:
    Outcome run(const QString &program, const QStringList &arguments, const QByteArray &input = {}) const;

    QTemporaryDir m_folder;
    QString m_sdk;
    int m_port = 0;
    int m_serverPort = 0;
    std::unique_ptr<QProcess> m_emulator;
};

/// One of the sample APKs by name.
QString sampleApk(const char *name);

} // namespace test
