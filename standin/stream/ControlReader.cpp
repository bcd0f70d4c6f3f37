#include "stream/ControlReader.h"

#include "device/KeyInput.h"

#include <QtEndian>
#include <thread>

namespace standin
{

using namespace Qt::StringLiterals;

namespace
{

enum MessageType {
    Key = 0,
    Text = 1,
    Touch = 2,
    Scroll = 3,
    Back = 4,
    GetClipboard = 8,
    SetClipboard = 9,
    StartApp = 16,
    ResetVideo = 17,
    ResizeDisplay = 21,
};
constexpr int actionUp = 1;
constexpr int keyCodeBack = 4;
constexpr qreal scrollDp = 640; // of the list for a scroll of 1.0, the most that a message can carry

template <typename T> T number(const QByteArray &bytes, qsizetype at)
{
    return qFromBigEndian<T>(bytes.constData() + at);
}

/// A point with the size of the frame it refers to, twelve bytes.
struct Position {
    QPoint point;
    QSize frame;

    Position(const QByteArray &bytes, qsizetype at)
        : point(number<qint32>(bytes, at), number<qint32>(bytes, at + 4))
        , frame(number<quint16>(bytes, at + 8), number<quint16>(bytes, at + 10))
    {
    }
    QPointF on(const QSize &display) const
    {
        if (frame.isEmpty())
            return point;
        return {
            qreal(point.x()) * display.width() / frame.width(), qreal(point.y()) * display.height() / frame.height()};
    }
};

} // namespace

ControlReader::ControlReader(Parts parts) : m_parts(std::move(parts)) { }

ControlReader::End ControlReader::run()
{
    for (;;) {
        const std::optional<QByteArray> type = read(1);
        if (!type || !handle(static_cast<uchar>(type->at(0)))) {
            m_parts.socket.close();
            return m_faulted ? End::fault : m_isBad ? End::badMessage : End::closed;
        }
    }
}

bool ControlReader::handle(int type)
{
    switch (type) {
    case Key:
        return key();
    case Text:
        return text();
    case Touch:
        return touch();
    case Scroll:
        return scroll();
    case Back:
        return back();
    case GetClipboard:
        return getClipboard();
    case SetClipboard:
        return setClipboard();
    case StartApp:
        return startApp();
    case ResetVideo:
        m_parts.video.requestKeyFrame();
        return true;
    case ResizeDisplay:
        return resizeDisplay();
    default:
        return fail(u"Unknown control message type: %1"_s.arg(type));
    }
}

bool ControlReader::key()
{
    const std::optional<QByteArray> body = read(13);
    if (!body)
        return false;
    const int action = body->at(0);
    const auto code = number<qint32>(*body, 1);
    m_parts.device.journal.add(
        u"keys"_s,
        QJsonObject{
            {u"displayId"_s, m_parts.display->id()},
            {u"action"_s, action},
            {u"keycode"_s, code},
            {u"repeat"_s, number<qint32>(*body, 5)},
            {u"metaState"_s, number<qint32>(*body, 9)}});
    // An app acts on the way down, but Back counts when it comes up.
    if ((action == actionUp) == (code == keyCodeBack))
        pressKey(m_parts.device, m_parts.display->id(), code);
    return true;
}

bool ControlReader::text()
{
    const std::optional<QString> text = readText(4, 1024 * 1024);
    if (!text)
        return false;
    m_parts.device.journal.add(u"texts"_s, QJsonObject{{u"displayId"_s, m_parts.display->id()}, {u"text"_s, *text}});
    m_parts.display->insertText(*text);
    return true;
}

bool ControlReader::touch()
{
    const std::optional<QByteArray> body = read(31);
    if (!body)
        return false;
    const int action = body->at(0);
    const Position position(*body, 9);
    const QPointF at = position.on(m_parts.display->model().size);
    m_parts.device.journal.add(
        u"touches"_s,
        QJsonObject{
            {u"displayId"_s, m_parts.display->id()},
            {u"action"_s, action},
            {u"x"_s, position.point.x()},
            {u"y"_s, position.point.y()},
            {u"frameWidth"_s, position.frame.width()},
            {u"frameHeight"_s, position.frame.height()},
            {u"displayX"_s, at.x()},
            {u"displayY"_s, at.y()},
            {u"pointerId"_s, QString::number(number<quint64>(*body, 1), 16)},
            {u"pressure"_s, number<quint16>(*body, 21)}});
    m_parts.display->touch(action, at);
    return true;
}

bool ControlReader::scroll()
{
    const std::optional<QByteArray> body = read(20);
    if (!body)
        return false;
    const Position position(*body, 0);
    const double horizontal = number<qint16>(*body, 12) / 32768.0;
    const double vertical = number<qint16>(*body, 14) / 32768.0;
    m_parts.device.journal.add(
        u"scrolls"_s,
        QJsonObject{
            {u"displayId"_s, m_parts.display->id()},
            {u"x"_s, position.point.x()},
            {u"y"_s, position.point.y()},
            {u"horizontal"_s, horizontal},
            {u"vertical"_s, vertical}});
    m_parts.display->scrollBy(-vertical * scrollDp);
    return true;
}

bool ControlReader::back()
{
    const std::optional<QByteArray> body = read(1);
    if (!body)
        return false;
    const int action = body->at(0);
    m_parts.device.journal.add(
        u"keys"_s,
        QJsonObject{
            {u"displayId"_s, m_parts.display->id()},
            {u"action"_s, action},
            {u"keycode"_s, keyCodeBack},
            {u"back"_s, true}});
    if (action == actionUp)
        m_parts.device.displays.back(m_parts.display->id());
    return true;
}

bool ControlReader::getClipboard()
{
    const std::optional<QByteArray> body = read(1);
    if (!body)
        return false;
    const int copyKey = body->at(0);
    if (copyKey != 0 && !m_parts.display->text().isEmpty()) {
        m_parts.device.clipboard.setText(m_parts.display->text(), m_parts.clipboardAuthor);
        if (copyKey == 2)
            m_parts.display->clearText();
    }
    m_parts.messages.sendClipboard(m_parts.device.clipboard.text());
    return true;
}

bool ControlReader::setClipboard()
{
    const std::optional<QByteArray> head = read(9);
    if (!head)
        return false;
    const std::optional<QString> text = readText(4, 256 * 1024);
    if (!text)
        return false;
    m_parts.device.clipboard.setText(*text, m_parts.clipboardAuthor);
    if (head->at(8) != 0)
        m_parts.display->insertText(*text);
    if (const auto sequence = number<quint64>(*head, 0); sequence != 0)
        m_parts.messages.acknowledgeClipboard(sequence);
    return true;
}

bool ControlReader::startApp()
{
    std::optional<QString> name = readText(1, 255);
    if (!name)
        return false;
    const bool stopFirst = name->startsWith(u'+');
    if (stopFirst) {
        name->remove(0, 1);
        m_parts.device.forceStop(*name);
    }
    if (m_parts.device.displays.start(*name, m_parts.display->id()))
        m_parts.device.journal.countStart(*name);
    else
        m_parts.log(u"[server] WARN: Cannot create launch intent for app %1\n"_s.arg(*name));
    return true;
}

bool ControlReader::resizeDisplay()
{
    const std::optional<QByteArray> body = read(4);
    if (!body)
        return false;
    const QSize wanted(number<quint16>(*body, 0), number<quint16>(*body, 2));
    const QSize size(wanted.width() & ~7, wanted.height() & ~7);
    m_parts.device.journal.add(
        u"resizes"_s,
        QJsonObject{
            {u"displayId"_s, m_parts.display->id()}, {u"width"_s, wanted.width()}, {u"height"_s, wanted.height()}});
    if (!m_parts.options.flexDisplay || size.width() < 16 || size.height() < 16 || size.width() > 8192
        || size.height() > 8192)
        m_parts.log(u"[server] WARN: Display not resized to %1x%2\n"_s.arg(wanted.width()).arg(wanted.height()));
    else if (size != m_parts.display->model().size)
        m_parts.display->resize(size);
    return true;
}

std::optional<QByteArray> ControlReader::read(qsizetype size)
{
    const FaultPlan &faults = m_parts.device.faults;
    const auto limit = faults.number(u"close-control-after"_s);
    if (limit && m_received + size > *limit) {
        m_faulted = true;
        return std::nullopt;
    }
    std::optional<QByteArray> bytes = m_parts.socket.readExactly(size);
    m_received += size;
    while (bytes && faults.has(u"device-stops-reading-control"_s) && !m_parts.socket.isClosed())
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    return bytes;
}

std::optional<QString> ControlReader::readText(qsizetype lengthBytes, quint32 limit)
{
    const std::optional<QByteArray> counted = read(lengthBytes);
    if (!counted)
        return std::nullopt;
    const quint32 length = lengthBytes == 1 ? static_cast<uchar>(counted->at(0)) : number<quint32>(*counted, 0);
    if (length > limit) {
        fail(u"Control message too long: %1"_s.arg(length));
        return std::nullopt;
    }
    const std::optional<QByteArray> bytes = read(static_cast<qsizetype>(length));
    return bytes ? std::optional(QString::fromUtf8(*bytes)) : std::nullopt;
}

bool ControlReader::fail(const QString &words)
{
    m_isBad = true;
    m_parts.log(u"[server] ERROR: Controller error: %1\n"_s.arg(words));
    m_parts.device.journal.add(u"errors"_s, words);
    return false;
}

} // namespace standin
