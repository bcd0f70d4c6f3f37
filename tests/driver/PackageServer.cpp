#include "driver/PackageServer.h"

#include "driver/ProgramUnderTest.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTcpSocket>

namespace quillnest::driver
{

PackageServer::PackageServer(TestDesktop &desktop, const QStringList &arguments)
    : m_process(desktop.start(ProgramUnderTest::program(QStringLiteral("standin-packages")), arguments))
{
    if (!m_process->waitForReadyRead(30000))
        throw DriverError(QStringLiteral("the package server does not start: %1")
                              .arg(QString::fromUtf8(m_process->readAllStandardError())));
    m_repository = QUrl(QString::fromUtf8(m_process->readLine().trimmed()));
    desktop.setVariable(QStringLiteral("QUILLNEST_SDK_REPOSITORY"), m_repository.toString());
}

PackageServer::~PackageServer()
{
    m_process->kill();
    m_process->waitForFinished(5000);
}

QByteArray PackageServer::get(const QString &path) const
{
    QTcpSocket socket;
    socket.connectToHost(m_repository.host(), static_cast<quint16>(m_repository.port()));
    socket.write("GET " + path.toUtf8() + " HTTP/1.1\r\n\r\n");
    QByteArray answer;
    while (socket.waitForReadyRead(10000))
        answer += socket.readAll();
    answer += socket.readAll();
    if (!answer.startsWith("HTTP/1.1 200 "))
        throw DriverError(QStringLiteral("the package server doesn't do %1").arg(path));
    return answer.sliced(answer.indexOf("\r\n\r\n") + 4);
}

void PackageServer::fault(const QString &name, const QString &argument, const QString &where) const
{
    get(QStringLiteral("/standin/fault?name=%1&argument=%2&where=%3").arg(name, argument, where));
}

void PackageServer::clearFaults() const
{
    get(QStringLiteral("/standin/clear"));
}

QStringList PackageServer::requests() const
{
    QStringList result;
    for (const auto &request : QJsonDocument::fromJson(get(QStringLiteral("/standin/requests"))).array())
        result.append(request[QStringLiteral("path")].toString().section(u'/', -1));
    return result;
}

} // namespace quillnest::driver
