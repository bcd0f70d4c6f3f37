#include "device/FaultPlan.h"

#include <QStringList>

namespace standin
{

using namespace Qt::StringLiterals;

const QStringList &FaultPlan::names()
{
    static const QStringList names
        = {u"never-boots"_s,
           u"sick-package-service"_s,
           u"wrong-api"_s,
           u"ignore-kill"_s,
           u"no-validated-network"_s,
           u"never-connect"_s,
           u"connect-late"_s,
           u"close-video-after"_s,
           u"close-control-after"_s,
           u"close-audio-after"_s,
           u"wrong-video-codec"_s,
           u"wrong-audio-codec"_s,
           u"garbage-video"_s,
           u"stall-video-after"_s,
           u"oversize-packet"_s,
           u"die-after-frames"_s,
           u"device-stops-reading-control"_s,
           u"server-outlives-its-sockets"_s,
           u"any-package-name"_s};
    return names;
}

bool FaultPlan::set(const QString &name, const QString &argument)
{
    if (!names().contains(name))
        return false;
    const std::lock_guard lock(m_mutex);
    m_faults[name] = argument;
    return true;
}

void FaultPlan::clear(const QString &name)
{
    const std::lock_guard lock(m_mutex);
    m_faults.remove(name);
}

void FaultPlan::clearAll()
{
    const std::lock_guard lock(m_mutex);
    m_faults.clear();
}

bool FaultPlan::has(const QString &name) const
{
    const std::lock_guard lock(m_mutex);
    return m_faults.contains(name);
}

std::optional<qint64> FaultPlan::number(const QString &name) const
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_faults.constFind(name);
    if (found == m_faults.constEnd())
        return std::nullopt;
    bool ok = false;
    const double value = found->toDouble(&ok);
    return ok ? std::optional(static_cast<qint64>(value)) : std::nullopt;
}

QMap<QString, QString> FaultPlan::all() const
{
    const std::lock_guard lock(m_mutex);
    return m_faults;
}

std::optional<QString> FaultPlan::setFromText(const QString &text)
{
    for (const QString &part : text.split(u',', Qt::SkipEmptyParts)) {
        const QString name = part.section(u'=', 0, 0).trimmed();
        if (!set(name, part.section(u'=', 1).trimmed()))
            return name;
    }
    return std::nullopt;
}

} // namespace standin
