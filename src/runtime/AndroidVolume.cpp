#include "runtime/AndroidVolume.h"

#include "runtime/AndroidCommands.h"

#include <QRegularExpression>

namespace quillnest
{

namespace
{
constexpr int musicStream = 3;
constexpr int notificationStream = 5;

/// The top of the range that the command prints, as in "volume is 5 in range [0..15]".
std::optional<qint64> topOfRange(const QString &output)
{
    static const QRegularExpression range(QStringLiteral("\\.\\.(\\d+)\\]"));
    const auto match = range.match(output);
    if (!match.hasMatch())
        return std::nullopt;
    bool valid = false;
    const auto top = match.captured(1).toLongLong(&valid);
    return valid ? std::optional(top) : std::nullopt;
}
} // namespace

void AndroidVolume::maximize(const AndroidCommands &commands)
{
    constexpr qsizetype loggedCharacters = 100;
    for (const int stream : {musicStream, notificationStream}) {
        const auto output = commands.runADB(
            {QStringLiteral("shell"), QStringLiteral("cmd media_session volume --stream %1 --get").arg(stream)});
        const auto top = topOfRange(output);
        if (!top) {
            commands.log().write(QStringLiteral("volume: could not read stream %1: %2")
                                     .arg(QString::number(stream), output.left(loggedCharacters)));
            continue;
        }
        commands.runADB({QStringLiteral("shell"), QStringLiteral("cmd audio set-volume %1 %2").arg(stream).arg(*top)});
        commands.log().write(QStringLiteral("volume: stream %1 set to %2").arg(stream).arg(*top));
    }
}

} // namespace quillnest
