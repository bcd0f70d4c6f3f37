#pragma once

#include <QNetworkAccessManager>
#include <QObject>
#include <QTimer>
#include <QUrl>

#include <chrono>
#include <functional>
#include <optional>
#include <span>

class QNetworkReply;

namespace quillnest
{

/// One request and its answer, piece by piece. Lives in the network's thread and deletes itself at its end.
class HttpTransfer : public QObject
{
public:
    struct Handlers {
        /// Takes a piece of the body, of which there will be `expected` bytes, or -1 while that is unknown. A text ends
        /// the transfer with these words.
        std::function<std::optional<QString>(std::span<const char> piece, qint64 expected)> onPiece;
        /// The last event: the status of an answer that has come whole, or why none has.
        std::function<void(int status, const std::optional<QString> &error)> onEnd;
    };
    enum class Body {
        /// As the server has it, so that its length is the one that was announced.
        asStored,
        /// Smaller on its way if the server likes.
        anyEncoding,
    };

    /// A transfer in which nothing moves for as long as `patience` has failed.
    HttpTransfer(
        QNetworkAccessManager &manager, const QUrl &url, Body body, std::chrono::milliseconds patience,
        Handlers handlers, QObject *parent);
    /// Ends the transfer without a word.
    ~HttpTransfer() override;

private:
    void takePieces();
    void finish();
    /// Once: hands over the result and goes.
    void end(int status, const std::optional<QString> &error);
    std::optional<QString> problem() const;
    std::optional<qint64> announcedLength() const;

    const Handlers m_handlers;
    QNetworkReply *m_reply = nullptr;
    QTimer m_patience;
    qint64 m_taken = 0;
    bool m_ended = false;
};

} // namespace quillnest
