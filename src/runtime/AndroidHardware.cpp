#include "runtime/AndroidHardware.h"

#include "base/BaseSettings.h"
#include "base/StrictUtf8.h"
#include "runtime/RuntimeSettings.h"

#include <QFile>
#include <QSaveFile>
#include <QStringList>

#include <algorithm>
#include <array>
#include <utility>

namespace quillnest
{

void AndroidHardware::apply(const AndroidRuntimePaths &paths, const SettingsStore &settings, const Folders &folders)
{
    const auto home = paths.avdHome.value_or(folders.home + QStringLiteral("/.android/avd"));
    const auto path = QStringLiteral("%1/%2.avd/config.ini").arg(home, paths.avdName);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    const auto text = strictUtf8(file.readAll());
    file.close();
    if (!text)
        return;

    const bool microphoneAndCamera = RuntimeSettings::micCamera.value(settings);
    // While the stream carries the sound, the emulator must not play it a second time.
    const bool forwardsAudio = BaseSettings::forwardAudio.value(settings);
    const auto camera = microphoneAndCamera ? QStringLiteral("webcam0") : QStringLiteral("none");
    const std::array<std::pair<QString, QString>, 4> wanted{{
        {QStringLiteral("hw.audioOutput="), forwardsAudio ? QStringLiteral("no") : QStringLiteral("yes")},
        {QStringLiteral("hw.audioInput="), microphoneAndCamera ? QStringLiteral("yes") : QStringLiteral("no")},
        {QStringLiteral("hw.camera.back="), camera},
        {QStringLiteral("hw.camera.front="), camera},
    }};

    auto lines = text->split(QLatin1Char('\n'));
    for (const auto &[prefix, value] : wanted) {
        const auto found = std::find_if(
            lines.begin(), lines.end(), [&prefix = prefix](const QString &line) { return line.startsWith(prefix); });
        if (found != lines.end())
            *found = prefix + value;
        else
            lines.prepend(prefix + value);
    }
    const auto changed = lines.join(QLatin1Char('\n'));
    if (changed == *text)
        return;
    QSaveFile target(path);
    const auto bytes = changed.toUtf8();
    if (target.open(QIODevice::WriteOnly) && target.write(bytes) == bytes.size())
        target.commit();
}

} // namespace quillnest
