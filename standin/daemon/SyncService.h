#pragma once

#include "daemon/AdbStream.h"
#include "device/DeviceTree.h"

namespace standin
{

/// The "sync:" service: requests of four letters, a little-endian word and that many bytes, until "QUIT". It carries
/// what `adb push`, `adb pull` and `adb ls` need.
class SyncService
{
public:
    SyncService(const DeviceTree &tree, AdbStream &stream);
    void serve();

private:
    bool answerStat(const QString &path);
    bool answerStatV2(const QByteArray &id, const QString &path);
    bool answerList(const QString &path);
    bool receiveFile(const QByteArray &pathAndMode);
    bool sendFile(const QString &path);
    bool fail(const QByteArray &words);
    bool send(const QByteArray &id, const QList<quint32> &words, const QByteArray &data = {});

    const DeviceTree &m_tree;
    AdbStream &m_stream;
};

} // namespace standin
