#pragma once

#include "base/QuillnestLayout.h"

#include <QPoint>
#include <QString>
#include <QUuid>

#include <optional>
#include <vector>

namespace quillnest
{

class AndroidWindowSession;

/// What a window's session asks of those around it: whatever concerns more than its own window. Main thread.
class SessionSurroundings
{
public:
    virtual ~SessionSurroundings() = default;

    /// The user sees what the app has to say.
    virtual void setRead(QUuid appID) = 0;
    /// The app plays nothing any more.
    virtual void setSilent(QUuid appID) = 0;
    /// Ends the app on the device, in the background.
    virtual void forceStop(QUuid appID, const QString &package) = 0;
    /// Shows the launcher with its top left corner there.
    virtual void showLauncher(QPoint origin) = 0;
    /// Gives all windows a size.
    virtual void applySize(const WindowSizePreset &preset) = 0;
    /// The top left corners of the windows that are on the screen.
    virtual std::vector<QPoint> windowCorners() const = 0;

    virtual void sessionShown(AndroidWindowSession &session) = 0;
    virtual void sessionHidden(AndroidWindowSession &session) = 0;
    /// Its stream has ended, with the error text of an end that nobody asked for. The session may be gone as soon as
    /// the event loop is back.
    virtual void sessionEnded(AndroidWindowSession &session, const std::optional<QString> &error) = 0;
};

} // namespace quillnest
