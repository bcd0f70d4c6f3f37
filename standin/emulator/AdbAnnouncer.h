#pragma once

#include <QByteArray>
#include <QtGlobal>

namespace standin
{

/// Tells the adb server about this emulator, and tells it again whenever the server does not list it: one that was
/// started later, or anew, finds the device by itself. Works on a thread of its own until the process ends.
class AdbAnnouncer
{
public:
    AdbAnnouncer(quint16 serverPort, quint16 consolePort);
    void start() const;

private:
    bool isListed() const;
    void announce() const;

    const quint16 m_serverPort;
    const quint16 m_consolePort;
};

/// ANDROID_ADB_SERVER_PORT, or the usual port.
quint16 adbServerPort();

} // namespace standin
