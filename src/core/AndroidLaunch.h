#pragma once

#include "base/MobileApp.h"
#include "core/AndroidStatus.h"
#include "core/StatusLine.h"
#include "core/StoreServices.h"

#include <chrono>
#include <map>
#include <optional>

namespace quillnest
{

/// What a click on an app does, and the warm-up before it. Main thread.
class AndroidLaunch : public QObject
{
    Q_OBJECT

public:
    AndroidLaunch(const StoreServices &services, AndroidStatus &android, StatusLine &status);

    /// The app whose launch began last and hasn't come to its end.
    std::optional<QUuid> launchingAppID() const { return m_launchingAppID; }

    /// What became of an app's last launch if that failed, whole; absent from its next success on.
    std::optional<QString> failure(QUuid id) const
    {
        const auto found = m_failures.find(id);
        return found == m_failures.end() ? std::nullopt : std::optional(found->second);
    }

    /// The one road of all callers to an app's window.
    void launch(const MobileApp &app);

    /// Starts Android before the user asks for it, if the settings allow it and nothing is under way.
    void prewarm();

Q_SIGNALS:
    /// The app that is being launched, or how a launch ended, is another.
    void launchingChanged();

private:
    void launchAndroid(const MobileApp &app);
    Task<> run(MobileApp app, std::chrono::nanoseconds openedAt);
    void openWindow(const MobileApp &app, const QString &package, std::chrono::nanoseconds openedAt);
    /// Of an end that nobody asked for: the app's own, or that of the whole device.
    Task<> tellEnd(MobileApp app, std::optional<QString> error);
    void fail(const MobileApp &app, const QString &description);
    void setLaunching(std::optional<QUuid> id);
    void clearLaunching(QUuid id);
    Task<> runPrewarm();

    const StoreServices &m_services;
    AndroidStatus &m_android;
    StatusLine &m_status;
    std::optional<QUuid> m_launchingAppID;
    std::map<QUuid, QString> m_failures;
    bool m_prewarming = false;
};

} // namespace quillnest
