#include "platform/linux/DBusDiagnostics.h"

#include <QDBusConnection>
#include <QDBusMessage>

namespace quillnest
{

namespace
{
const auto service = QStringLiteral("app.quillnest.Quillnest");
const auto object = QStringLiteral("/app/quillnest/diagnostics");
const auto interfaceName = QStringLiteral("app.quillnest.Diagnostics");
} // namespace

bool DBusDiagnostics::serve(std::function<QByteArray()> report)
{
    m_report = std::move(report);
    auto bus = QDBusConnection::sessionBus();
    return bus.registerObject(object, this, QDBusConnection::ExportScriptableSlots) && bus.registerService(service);
}

QString DBusDiagnostics::report() const
{
    return QString::fromUtf8(m_report ? m_report() : QByteArray());
}

std::optional<QByteArray> DBusDiagnostics::ask()
{
    const auto call = QDBusMessage::createMethodCall(service, object, interfaceName, QStringLiteral("report"));
    const auto answer = QDBusConnection::sessionBus().call(call, QDBus::Block, 5000);
    if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty())
        return std::nullopt;
    return answer.arguments().constFirst().toString().toUtf8();
}

} // namespace quillnest
