#include "base/QuillnestLog.h"

#include "base/PlainText.h"
#include "base/StrictUtf8.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>

#include <algorithm>

namespace quillnest
{

QuillnestLog::QuillnestLog(std::shared_ptr<Clock> clock, const QString &directory, const QString &name, bool truncate)
    : m_clock(std::move(clock)), m_path(directory + QLatin1Char('/') + name)
{
    if (!QDir().mkpath(directory))
        return;
    auto handle = std::make_unique<QFile>(m_path);
    // Append mode and not a seek: two processes may write to the general log, and neither may overwrite the other.
    const auto mode = QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered;
    if (truncate)
        QFile::remove(m_path);
    if (handle->open(mode, QFileDevice::ReadOwner | QFileDevice::WriteOwner))
        m_handle = std::move(handle);
}

void QuillnestLog::write(const QString &message)
{
    const std::scoped_lock guard(m_lock);
    if (!m_handle)
        return;
    const auto lines = message.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    const auto timestamp = m_clock->wallTime().toUTC().toString(Qt::ISODateWithMs);
    QByteArray text;
    for (const auto &line : lines)
        text += (timestamp + QLatin1Char(' ') + plainLine(line) + QLatin1Char('\n')).toUtf8();
    if (!text.isEmpty())
        m_handle->write(text);
}

QString QuillnestLog::tail(int maxLines) const
{
    if (maxLines < 0)
        qFatal("QuillnestLog::tail: negative count");
    const std::scoped_lock guard(m_lock);
    QFile file(m_path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const auto text = strictUtf8(file.readAll());
    if (!text)
        return {};
    auto lines = text->split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    if (lines.size() > maxLines)
        lines = lines.sliced(lines.size() - maxLines);
    for (auto &line : lines) {
        const auto space = line.indexOf(QLatin1Char(' '));
        if (space >= 0 && space + 1 < line.size())
            line.remove(0, space + 1);
    }
    return lines.join(QLatin1Char('\n'));
}

} // namespace quillnest
