#include "platform/linux/XdgLoginItems.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace quillnest
{

namespace
{

/// A path as one word of an Exec line: quoted, and then escaped once more as a value of the file.
QByteArray execWord(const QString &path)
{
    QString word = path;
    for (const auto special : {u'\\', u'"', u'`', u'$'})
        word.replace(QChar(special), QStringLiteral("\\") + QChar(special));
    word.replace(QLatin1Char('%'), QStringLiteral("%%"));
    word = QLatin1Char('"') + word + QLatin1Char('"');
    return word.replace(QLatin1Char('\\'), QStringLiteral("\\\\")).toUtf8();
}

} // namespace

XdgLoginItems::XdgLoginItems(const QString &configFolder, QString program)
    : m_path(configFolder + QStringLiteral("/autostart/app.quillnest.Quillnest.desktop")), m_program(std::move(program))
{
}

LoginItems::Status XdgLoginItems::status() const
{
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return Status::notRegistered;
    for (const auto &line : file.readAll().split('\n')) {
        const auto setting = line.simplified().replace(" ", "");
        if (setting == "Hidden=true" || setting == "X-GNOME-Autostart-enabled=false")
            return Status::requiresApproval;
    }
    return Status::enabled;
}

QByteArray XdgLoginItems::entry() const
{
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Name=Quillnest\n"
           "Comment=Android apps beside your desktop programs\n"
           "Exec="
        + execWord(m_program)
        + "\n"
          "Icon=app.quillnest.Quillnest\n"
          "Terminal=false\n"
          "StartupNotify=false\n"
          "X-GNOME-Autostart-enabled=true\n";
}

std::optional<QString> XdgLoginItems::set(bool enabled)
{
    if (!enabled) {
        QFile file(m_path);
        return !file.exists() || file.remove() ? std::nullopt : std::optional(file.errorString());
    }
    QDir().mkpath(QFileInfo(m_path).path());
    QSaveFile file(m_path);
    const auto content = entry();
    const bool written = file.open(QIODevice::WriteOnly) && file.write(content) == content.size() && file.commit();
    return written ? std::nullopt : std::optional(file.errorString());
}

} // namespace quillnest
