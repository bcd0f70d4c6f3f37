#include "stream/StreamOptions.h"

#include <QRegularExpression>

namespace standin
{

using namespace Qt::StringLiterals;

bool StreamOptions::parse(const QStringList &words, QString *problem)
{
    if (words.isEmpty()) {
        *problem = u"java.lang.IllegalArgumentException: Missing client version"_s;
        return false;
    }
    if (words[0] != QLatin1StringView(version)) {
        *problem = u"java.lang.IllegalArgumentException: The server version (%1) does not match the client (%2)"_s.arg(
            QLatin1StringView(version), words[0]);
        return false;
    }
    for (const QString &word : words.mid(1)) {
        const QString key = word.section(u'=', 0, 0);
        const QString value = word.section(u'=', 1);
        bool ok = word.contains(u'=');
        if (!ok) {
            *problem = u"java.lang.IllegalArgumentException: Invalid key=value pair: \"%1\""_s.arg(word);
            return false;
        }
        if (key == u"scid") {
            scid = value.toUInt(&ok, 16);
            ok = ok && scid <= 0x7fffffff;
        } else if (key == u"audio") {
            audio = value != u"false";
        } else if (key == u"audio_codec") {
            ok = value == u"raw"; // the one codec that this device has
        } else if (key == u"video_bit_rate") {
            videoBitRate = value.toInt(&ok);
        } else if (key == u"max_fps") {
            maxFps = qRound(value.toDouble(&ok));
        } else if (key == u"new_display") {
            static const QRegularExpression form(u"^(\\d+)x(\\d+)(?:/(\\d+))?$"_s);
            const auto match = form.match(value);
            ok = match.hasMatch();
            displaySize = QSize(match.captured(1).toInt(), match.captured(2).toInt());
            if (!match.captured(3).isEmpty())
                dpi = match.captured(3).toInt();
        } else if (key == u"flex_display") {
            flexDisplay = value == u"true";
        } else if (key == u"clipboard_autosync") {
            clipboardAutosync = value == u"true";
        } else if (key != u"log_level" && key != u"vd_system_decorations" && key != u"power_on") {
            ok = false;
        }
        if (!ok) {
            *problem = u"java.lang.IllegalArgumentException: Unsupported option: %1"_s.arg(word);
            return false;
        }
    }
    if (displaySize.width() < 16 || displaySize.height() < 16 || displaySize.width() > 8192
        || displaySize.height() > 8192 || dpi < 20 || dpi > 2000 || maxFps < 1 || videoBitRate < 1) {
        *problem = u"java.lang.IllegalArgumentException: Invalid display or video option"_s;
        return false;
    }
    return true;
}

QByteArray StreamOptions::socketName() const
{
    return "scrcpy_" + QByteArray::number(scid, 16).rightJustified(8, '0');
}

} // namespace standin
