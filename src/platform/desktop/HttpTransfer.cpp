#include "platform/desktop/HttpTransfer.h"

#include <QNetworkReply>

#include <array>

namespace quillnest
{

namespace
{

/// What may wait in memory between the network and whoever takes it.
constexpr qint64 waitingBytes = 1 << 20;

bool isWeb(const QUrl &url)
{
    const auto scheme = url.scheme();
    return (scheme == u"http" || scheme == u"https") && !url.host().isEmpty();
}

/// Errors that only say which status the answer has.
bool isStatus(QNetworkReply::NetworkError error)
{
    return (error >= QNetworkReply::ContentAccessDenied && error <= QNetworkReply::UnknownContentError)
        || error == QNetworkReply::ProtocolInvalidOperationError
        || (error >= QNetworkReply::InternalServerError && error <= QNetworkReply::UnknownServerError);
}

} // namespace

HttpTransfer::HttpTransfer(
    QNetworkAccessManager &manager, const QUrl &url, Body body, std::chrono::milliseconds patience, Handlers handlers,
    QObject *parent)
    : QObject(parent), m_handlers(std::move(handlers))
{
    // The library would read files and data URLs as well.
    if (!isWeb(url)) {
        QTimer::singleShot(0, this, [this] { end(0, QStringLiteral("The address is not one of the web")); });
        return;
    }
    QNetworkRequest request(url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("Quillnest"));
    if (body == Body::asStored)
        request.setRawHeader("Accept-Encoding", "identity");
    m_reply = manager.get(request);
    m_reply->setParent(this);
    m_reply->setReadBufferSize(waitingBytes);

    m_patience.setSingleShot(true);
    m_patience.setInterval(patience);
    connect(&m_patience, &QTimer::timeout, this, [this] { end(0, QStringLiteral("The server has gone silent")); });
    connect(m_reply, &QNetworkReply::redirected, this, [this] { m_patience.start(); });
    connect(m_reply, &QNetworkReply::metaDataChanged, this, [this] { m_patience.start(); });
    connect(m_reply, &QNetworkReply::readyRead, this, &HttpTransfer::takePieces);
    connect(m_reply, &QNetworkReply::finished, this, &HttpTransfer::finish);
    m_patience.start();
}

HttpTransfer::~HttpTransfer()
{
    if (!m_reply)
        return;
    m_reply->disconnect(this);
    m_reply->abort();
}

void HttpTransfer::takePieces()
{
    std::array<char, 1 << 18> buffer;
    const auto length = announcedLength().value_or(-1);
    for (qint64 count = 0; !m_ended && (count = m_reply->read(buffer.data(), buffer.size())) > 0;) {
        m_taken += count;
        const auto refusal = m_handlers.onPiece(std::span(buffer.data(), static_cast<std::size_t>(count)), length);
        if (refusal)
            end(0, refusal);
    }
    // Only now: the time that the disk took is not the server's.
    if (!m_ended)
        m_patience.start();
}

void HttpTransfer::finish()
{
    takePieces();
    const auto words = problem();
    end(words ? 0 : m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt(), words);
}

std::optional<QString> HttpTransfer::problem() const
{
    const auto status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    const auto error = m_reply->error();
    if (error != QNetworkReply::NoError && !(isStatus(error) && status.isValid()))
        return m_reply->errorString();
    // The library takes a body that ends early for one that is as long as it came.
    const auto length = announcedLength();
    if (length && m_taken < *length)
        return QStringLiteral("Connection closed after %1 of %2 bytes").arg(m_taken).arg(*length);
    return std::nullopt;
}

std::optional<qint64> HttpTransfer::announcedLength() const
{
    // Of an encoded body it is the length on the way, and what arrives here is the other.
    const auto encoding = m_reply->rawHeader("Content-Encoding").trimmed();
    if (!encoding.isEmpty() && encoding != "identity")
        return std::nullopt;
    bool isNumber = false;
    const auto length = m_reply->header(QNetworkRequest::ContentLengthHeader).toLongLong(&isNumber);
    return isNumber && length >= 0 ? std::optional(length) : std::nullopt;
}

void HttpTransfer::end(int status, const std::optional<QString> &error)
{
    if (std::exchange(m_ended, true))
        return;
    m_patience.stop();
    m_handlers.onEnd(status, error);
    deleteLater();
}

} // namespace quillnest
