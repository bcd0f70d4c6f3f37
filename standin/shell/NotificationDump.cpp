#include "shell/NotificationDump.h"

#include "device/Device.h"

namespace standin
{

using namespace Qt::StringLiterals;

QString dumpNotifications(const Device &device)
{
    QString text = u"Current Notification Manager state:\n  Notification List:\n"_s;
    for (const Notification &each : device.notifications.notifications()) {
        const QString flags = each.isOngoing ? u"0x62"_s : u"0x10"_s;
        text += u"    NotificationRecord(0x0%1: pkg=%2 user=UserHandle{0} id=%3 tag=null importance=3 key=%4: "
                "Notification(channel=default shortcut=null contentView=null vibrate=null sound=null defaults=0x0 "
                "flags=%5 color=0x00000000 vis=PRIVATE))\n"_s.arg(each.id, 7, 16, QChar(u'0'))
                    .arg(each.package)
                    .arg(each.id)
                    .arg(each.key(), flags);
        // One argument at a time would let a percent sign in one text swallow the next.
        text += u"      uid=10123 userId=0\n      extras={\n          android.title=String ("_s + each.title
            + u")\n          android.text=String ("_s + each.text
            + u")\n          android.reduced.images=Boolean (true)\n      }\n"_s;
    }
    return text + u"\n  mArchive=Archive (0 notifications)\n"_s;
}

QString dumpMediaSessions(const Device &device)
{
    const QMap<QString, MediaSession> sessions = device.notifications.media();
    QString text = u"MEDIA SESSION SERVICE (dumpsys media_session)\n\n0 sessions listeners.\n"
                   "Global priority session is null\nUser Records:\nRecord for full_user=0\n"
                   "  Sessions Stack - have %1 sessions:\n"_s.arg(sessions.size());
    for (auto session = sessions.begin(); session != sessions.end(); ++session) {
        text += u"    session %1/session (userId=0)\n      ownerPid=4242, ownerUid=10123, userId=0\n"
                "      package=%1\n      active=true\n"_s.arg(session.key());
        text += u"      state=PlaybackState {state=%1, position=0, buffered position=0, speed=1.0, updated=1}\n"_s.arg(
            session->isPlaying ? u"PLAYING(3)"_s : u"PAUSED(2)"_s);
        text += u"      metadata: size=3, description="_s + session->title + u", "_s + session->artist + u", null\n"_s;
    }
    return text;
}

} // namespace standin
