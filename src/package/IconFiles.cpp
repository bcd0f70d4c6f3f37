#include "package/IconFiles.h"

#include "base/MobileApp.h"
#include "base/QuillnestFolders.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>

namespace quillnest
{

IconFiles::IconFiles(const Platform &platform)
    : m_executor(*platform.executor), m_drawing(platform.drawing), m_folder(QuillnestFolders::icons(platform.folders))
{
}

QString IconFiles::path(QUuid id) const
{
    return m_folder + QLatin1Char('/') + uuidText(id) + QStringLiteral(".png");
}

std::optional<IconFiles::Bytes> IconFiles::read(QUuid id) const
{
    QFile file(path(id));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const auto content = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return std::nullopt;
    return Bytes(content.begin(), content.end());
}

std::optional<IconFiles::Bytes> IconFiles::keep(QUuid id, const Icon &icon) const
{
    auto png = icon.png.empty() ? m_drawing->encodePng(icon.picture) : icon.png;
    if (!png)
        return std::nullopt;
    QDir().mkpath(m_folder);
    QSaveFile file(path(id));
    if (file.open(QIODevice::WriteOnly)) {
        file.write(reinterpret_cast<const char *>(png->data()), static_cast<qint64>(png->size()));
        file.commit();
    }
    return png;
}

void IconFiles::keepLater(QUuid id, std::shared_ptr<const Icon> icon)
{
    {
        const std::scoped_lock guard(m_lock);
        m_waiting.push_back({id, std::move(icon)});
        if (m_waiting.size() > 1)
            return;
    }
    goOnLater();
}

void IconFiles::goOnLater()
{
    m_executor.asUtility([self = shared_from_this()] { self->keepNext(); });
}

void IconFiles::keepNext()
{
    Waiting next;
    {
        const std::scoped_lock guard(m_lock);
        next = m_waiting.front();
    }
    keep(next.id, *next.icon);
    {
        const std::scoped_lock guard(m_lock);
        m_waiting.pop_front();
        if (m_waiting.empty())
            return;
    }
    goOnLater();
}

} // namespace quillnest
