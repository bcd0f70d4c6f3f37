#include "device/DisplayRegistry.h"

#include "common/StableHash.h"

#include <algorithm>

namespace standin
{

using namespace Qt::StringLiterals;

namespace
{

const QString launcher = u"com.android.launcher3"_s;

} // namespace

QColor accentOf(const QString &package)
{
    return QColor::fromHsv(static_cast<int>(stableHash(package) % 360), 150, 190);
}

DisplayRegistry::DisplayRegistry(const PackageStore &packages, bool night) : m_packages(packages), m_night(night)
{
    m_displays[0] = std::make_shared<Display>(0, QSize(1080, 2400), 420, night);
    m_tasks.push_back({m_lastTask, 0, launcher, u"com.android.launcher3.uioverrides.QuickstepLauncher"_s});
}

std::shared_ptr<Display> DisplayRegistry::create(QSize size, int dpi)
{
    const std::lock_guard lock(m_mutex);
    auto display = std::make_shared<Display>(++m_lastDisplay, size, dpi, m_night);
    m_displays[m_lastDisplay] = display;
    return display;
}

void DisplayRegistry::remove(int displayId)
{
    const std::lock_guard lock(m_mutex);
    m_displays.erase(displayId);
    std::erase_if(m_tasks, [&](const Task &task) { return task.displayId == displayId; });
}

std::shared_ptr<Display> DisplayRegistry::find(int displayId) const
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_displays.find(displayId);
    return found == m_displays.end() ? nullptr : found->second;
}

std::vector<std::shared_ptr<Display>> DisplayRegistry::all() const
{
    const std::lock_guard lock(m_mutex);
    std::vector<std::shared_ptr<Display>> displays;
    for (const auto &[id, display] : m_displays)
        displays.push_back(display);
    return displays;
}

bool DisplayRegistry::start(const QString &package, int displayId)
{
    const std::optional<InstalledPackage> installed = m_packages.find(package);
    if (!installed || installed->info.activity.isEmpty())
        return false;
    const std::lock_guard lock(m_mutex);
    if (!m_displays.contains(displayId))
        return false;
    const auto running
        = std::find_if(m_tasks.begin(), m_tasks.end(), [&](const Task &task) { return task.package == package; });
    Task task{++m_lastTask, displayId, package, installed->info.activity};
    int leftDisplay = displayId;
    if (running != m_tasks.end()) { // an app has one task, which moves
        leftDisplay = running->displayId;
        task = *running;
        task.displayId = displayId;
        m_tasks.erase(running);
    }
    m_tasks.push_back(task);
    showTop(displayId);
    showTop(leftDisplay);
    return true;
}

bool DisplayRegistry::forceStop(const QString &package)
{
    const std::lock_guard lock(m_mutex);
    const auto running = std::find_if(m_tasks.begin(), m_tasks.end(), [&](const Task &task) {
        return task.package == package && task.package != launcher;
    });
    if (running == m_tasks.end())
        return false;
    const int displayId = running->displayId;
    m_tasks.erase(running);
    showTop(displayId);
    return true;
}

void DisplayRegistry::back(int displayId)
{
    const std::lock_guard lock(m_mutex);
    const auto top
        = std::find_if(m_tasks.rbegin(), m_tasks.rend(), [&](const Task &task) { return task.displayId == displayId; });
    if (top == m_tasks.rend() || top->package == launcher)
        return;
    if (top->depth > 1)
        --top->depth;
    else
        m_tasks.erase(std::next(top).base());
    showTop(displayId);
}

void DisplayRegistry::home(int displayId)
{
    const std::lock_guard lock(m_mutex);
    std::erase_if(m_tasks, [&](const Task &task) { return task.displayId == displayId && task.package != launcher; });
    showTop(displayId);
}

void DisplayRegistry::pushScreen(int displayId)
{
    const std::lock_guard lock(m_mutex);
    const auto top
        = std::find_if(m_tasks.rbegin(), m_tasks.rend(), [&](const Task &task) { return task.displayId == displayId; });
    if (top != m_tasks.rend())
        ++top->depth;
    showTop(displayId);
}

void DisplayRegistry::setNight(bool night)
{
    const std::lock_guard lock(m_mutex);
    m_night = night;
    for (const auto &[id, display] : m_displays)
        display->setNight(night);
}

std::vector<Task> DisplayRegistry::tasks() const
{
    const std::lock_guard lock(m_mutex);
    return m_tasks;
}

std::optional<Task> DisplayRegistry::top(int displayId) const
{
    const std::lock_guard lock(m_mutex);
    const auto top
        = std::find_if(m_tasks.rbegin(), m_tasks.rend(), [&](const Task &task) { return task.displayId == displayId; });
    return top == m_tasks.rend() ? std::nullopt : std::optional(*top);
}

void DisplayRegistry::showTop(int displayId)
{
    const auto display = m_displays.find(displayId);
    if (display == m_displays.end())
        return;
    const auto top
        = std::find_if(m_tasks.rbegin(), m_tasks.rend(), [&](const Task &task) { return task.displayId == displayId; });
    const bool shown = top != m_tasks.rend() && top->package != launcher;
    display->second->setApp(shown ? lookOf(top->package) : std::nullopt);
    display->second->setDepth(shown ? top->depth : 0);
}

std::optional<AppLook> DisplayRegistry::lookOf(const QString &package) const
{
    const std::optional<InstalledPackage> installed = m_packages.find(package);
    if (!installed)
        return std::nullopt;
    return AppLook{package, installed->info.label, installed->icon, accentOf(package)};
}

} // namespace standin
