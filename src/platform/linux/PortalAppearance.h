#pragma once

#include "platform/Appearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QVariant>

#include <atomic>

namespace quillnest
{

/// The colour scheme that the desktop's settings portal reports (org.freedesktop.portal.Settings, namespace
/// "org.freedesktop.appearance", key "color-scheme": 0 no preference, 1 dark, 2 light). Light until the portal has
/// answered, and on a desktop without one.
class PortalAppearance : public Appearance
{
    Q_OBJECT

public:
    /// Asks the portal and begins to listen; returns without waiting for it. Main thread.
    explicit PortalAppearance(const QDBusConnection &bus = QDBusConnection::sessionBus());

    bool isDark() const override { return m_dark; }

private Q_SLOTS:
    /// Namespace, key and the value in a variant. Takes the message whole: a slot with a variant among its parameters
    /// can't be connected before the bus has carried a first message.
    void settingChanged(const QDBusMessage &signal);

private:
    void take(const QVariant &value);

    std::atomic_bool m_dark = false;
};

} // namespace quillnest
