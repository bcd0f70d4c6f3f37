#pragma once

#include "driver/TestDesktop.h"

#include <QJsonObject>

namespace quillnest::driver
{

/// Quillnest on a test desktop. Ends the program and the device with the object.
class ProgramUnderTest
{
public:
    enum class Runtime {
        /// A complete managed runtime whose device is the stand-in.
        complete,
        /// Nothing yet: the program has to download it.
        none,
    };

    /// Lays the runtime out, if there is to be one; starts nothing.
    explicit ProgramUnderTest(TestDesktop &desktop, Runtime runtime = Runtime::complete);
    ~ProgramUnderTest();
    ProgramUnderTest(const ProgramUnderTest &) = delete;
    ProgramUnderTest &operator=(const ProgramUnderTest &) = delete;

    /// Where a sample app lies: "tide", "ember", "lantern".
    static QString sample(const QString &name);
    static QString program(const QString &name);
    /// Writes a copy of Tide under another package and label, which are as long as its own: 26 and 4 characters.
    void writeTide(const QString &path, const QString &package, const QString &label) const;

    void start(const QStringList &arguments = {});
    /// The same through another program that takes a command to run at the end of its arguments.
    void startThrough(const QString &wrapper, const QStringList &arguments);
    bool isRunning() const;
    qint64 processId() const;
    /// What the program holds in memory of its own, in bytes.
    qint64 memory() const;
    /// What the program's descriptors lead to. Those by which threads are woken are left out: the pool's threads come
    /// and go.
    QStringList descriptors() const;
    int threads() const;
    /// The command lines of its child processes but the device's.
    QStringList children() const;
    void kill();
    /// Asks the program to end and waits; the exit status.
    int quit(double seconds = 30);
    /// Waits for the end that something else brings; the exit status.
    int waitForEnd(double seconds);
    /// What the program printed on its standard output and error so far.
    QByteArray output();

    void post(const QString &command) const;
    QByteArray ctl(const QStringList &arguments) const;
    /// Writes a setting, whether the program runs or not.
    void setSetting(const QString &key, const QJsonValue &value) const;

    /// The program's own report; empty while it doesn't answer.
    QJsonObject state() const;
    /// The report's first window, if there is one.
    QJsonObject window() const;
    QString statusMessage() const;
    QString log() const;
    /// The log of the app's newest window.
    QString windowLog(const QString &package) const;
    QString logFolder() const;

    /// Adds files and waits until the library holds them all.
    void addApps(const QStringList &paths);
    /// Waits until the window of the first app shows pictures.
    QJsonObject waitForPicture(double seconds = 30) const;
    /// Where the tile of an app stands on the screen, once the panel shows it.
    QRectF waitForTile(const QString &name, double seconds = 10) const;
    void waitForState(const QString &what, double seconds, const std::function<bool(const QJsonObject &)> &test) const;

    /// The stand-in's state; empty while it doesn't run.
    QJsonObject device() const;
    void deviceControl(const QStringList &arguments) const;
    /// What the device has on its newest display.
    QImage deviceScreenshot() const;
    bool isDeviceRunning() const;
    /// The device is gone at once, as if its machine had lost its power.
    void endDevice() const;
    /// How the device starts the next time: "bootSeconds" and "faults".
    void configureDevice(const QJsonObject &configuration) const;

    /// From now on the program's adb is this script for bash, in which "$adb" is the real one.
    void replaceAdb(const QString &script) const;
    /// From now on every run of adb by the program is noted.
    struct AdbCall {
        double time = 0;
        QString arguments;
    };
    void noteAdbCalls() const;
    std::vector<AdbCall> adbCalls() const;

    TestDesktop &desktop() { return m_desktop; }
    QString dataFolder() const;

private:
    void waitForAnswer();
    QString adbPath() const;
    QString deviceFolder() const;
    QString deviceSocket() const;

    TestDesktop &m_desktop;
    std::unique_ptr<QProcess> m_process;
    QByteArray m_output;
};

/// The rectangle that a report's object describes.
QRect rectangle(const QJsonObject &object);

} // namespace quillnest::driver
