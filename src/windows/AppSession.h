#pragma once

#include "windows/AndroidMedia.h"
#include "windows/SessionCounters.h"
#include "windows/WindowContent.h"

#include <QByteArray>
#include <QImage>
#include <QString>
#include <QUuid>

#include <functional>
#include <memory>
#include <optional>

namespace quillnest
{

class SampleConsumer;

/// What a window tells its user by itself, in a few words.
struct WindowMessage {
    QString title;
    QString text;
};

/// One running app and its window, as commands and features see it. It is there from "opened" to "ended" of
/// SessionEvents; whoever waits for something meanwhile finds it again by its app's id. Main thread.
class AppSession
{
public:
    virtual ~AppSession() = default;

    virtual QUuid appID() const = 0;
    virtual QString package() const = 0;
    virtual QString title() const = 0;
    /// On the screen: neither hidden nor about to end.
    virtual bool isVisible() const = 0;
    /// `close` was called; the end is yet to come.
    virtual bool isClosing() const = 0;
    /// The virtual display's id, once the device has told it.
    virtual std::optional<int> displayID() const = 0;
    virtual SessionCounters counters() const = 0;

    /// Raises the window and gives it the keyboard.
    virtual void show() = 0;
    /// Takes the window off the screen; the app goes on.
    virtual void hide() = 0;
    /// Ends the app. The reason is for the log.
    virtual void close(const QString &reason) = 0;

    /// Goes back in the app, and out of it when there is nothing to go back to.
    virtual void handleBack() = 0;
    /// Types this machine's clipboard into the app.
    virtual void paste() = 0;
    /// Puts what is selected in the app onto this machine's clipboard.
    virtual void copy() = 0;
    virtual void sendMediaKey(MediaAction action) = 0;
    /// Any other message of ScrcpyControl.
    virtual void send(const QByteArray &message) = 0;

    /// Asks for a still of what the app shows, in the video's full size. `take` gets the next picture that stands by
    /// itself; nothing when that one can't be decoded or the session ends before.
    virtual void requestStill(std::function<void(const QImage &)> take) = 0;

    /// Samples of picture and sound for a recorder, from now on, and from now on no more.
    virtual void attach(const std::shared_ptr<SampleConsumer> &consumer) = 0;
    virtual void detach(const std::shared_ptr<SampleConsumer> &consumer) = 0;

    /// Shows a message in the window. Answers false when nobody can see it: the window is hidden, or has no place for
    /// messages.
    virtual bool showMessage(const WindowMessage &message) = 0;
    /// What shows the messages; null for nothing.
    virtual void setMessageDisplay(std::function<void(const WindowMessage &)> display) = 0;

    /// Lays a widget over the picture; see WindowContent::put.
    virtual void put(QWidget *overlay, WindowContent::Place place) = 0;
};

} // namespace quillnest
