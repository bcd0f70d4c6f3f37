#pragma once

#include "device/Display.h"
#include "device/PackageStore.h"

#include <map>
#include <memory>

namespace standin
{

/// One app's place on a display.
struct Task {
    int id = 0;
    int displayId = 0;
    QString package;
    QString activity;
    int depth = 1; ///< its screens on top of one another
};

/// The displays, and the tasks on them from bottom to top. Thread safe.
class DisplayRegistry
{
public:
    DisplayRegistry(const PackageStore &packages, bool night);

    std::shared_ptr<Display> create(QSize size, int dpi);
    /// The tasks on the display end with it.
    void remove(int displayId);
    std::shared_ptr<Display> find(int displayId) const;
    std::vector<std::shared_ptr<Display>> all() const;

    /// Brings the package to the top of the display. False when it is not installed or has no activity to start.
    bool start(const QString &package, int displayId);
    bool forceStop(const QString &package);
    /// One screen back; from its first screen the app leaves the display.
    void back(int displayId);
    void home(int displayId);
    void pushScreen(int displayId);
    void setNight(bool night);

    std::vector<Task> tasks() const;
    std::optional<Task> top(int displayId) const;

private:
    void showTop(int displayId); // with the lock held
    std::optional<AppLook> lookOf(const QString &package) const;

    const PackageStore &m_packages;
    mutable std::mutex m_mutex;
    std::map<int, std::shared_ptr<Display>> m_displays;
    std::vector<Task> m_tasks;
    int m_lastTask = 10;
    int m_lastDisplay = 1; // 0 is the device's own, and an emulator's first virtual display is number 2
    bool m_night;
};

/// A colour that belongs to the package for good.
QColor accentOf(const QString &package);

} // namespace standin
