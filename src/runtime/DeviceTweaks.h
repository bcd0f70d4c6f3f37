#pragma once

#include "platform/Tasks.h"
#include "runtime/AndroidCommands.h"

#include <QObject>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <vector>

namespace quillnest
{

/// What the device is to be like, by the user's settings: the one place that hears every change of them, wherever it
/// comes from, and that brings a device in line that has become ready. Features add what they see to; this class knows
/// none of them. Main thread.
class DeviceTweaks : public QObject
{
    Q_OBJECT

public:
    /// The order on a device that has become ready.
    enum class Stage { apps, appearance, sound, network };

    struct Tweak {
        Stage stage;
        /// Brings the device in line with the settings as they are then. Blocks for adb, on a thread of the pool; holds
        /// all that it uses. What fails is the tweak's own affair.
        std::function<void(const AndroidCommands &)> apply;
        /// The settings that it follows while the device runs.
        QStringList settings{};
    };

    explicit DeviceTweaks(std::shared_ptr<const AndroidCommands> commands);
    ~DeviceTweaks() override;

    /// Numbers the tweaks in the order of adding.
    using Id = std::size_t;
    Id add(Tweak tweak);

    /// For settings that a running device can't take over: calls `react` at each change of one of them.
    void whenChanged(const QStringList &settings, std::function<void()> react);

    /// All of them, stage by stage, on a device that has become ready.
    Task<> applyAll();

    /// One of them, on a device if one is booted. Requests that come before the device's turn are one.
    void apply(Id id);

private:
    using Batch = std::vector<std::function<void(const AndroidCommands &)>>;

    void settingChanged(const QString &key);
    /// One batch at a time, so that an older choice never overtakes a newer one on its way to the device.
    Task<> work();
    Batch batch(const std::set<Id> &ids) const;

    const std::shared_ptr<const AndroidCommands> m_commands;
    std::vector<Tweak> m_tweaks;
    std::set<Id> m_wanted;
    std::optional<Completion<>> m_all;
    bool m_working = false;
};

} // namespace quillnest
