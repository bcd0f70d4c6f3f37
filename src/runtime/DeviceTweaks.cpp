#include "runtime/DeviceTweaks.h"

#include "base/FireAndForget.h"
#include "platform/DescribedError.h"
#include "runtime/AndroidRuntimeError.h"

#include <QPointer>

#include <algorithm>
#include <numeric>

namespace quillnest
{

DeviceTweaks::DeviceTweaks(std::shared_ptr<const AndroidCommands> commands) : m_commands(std::move(commands))
{
    connect(m_commands->platform().settings.get(), &SettingsStore::changed, this, &DeviceTweaks::settingChanged);
}

DeviceTweaks::~DeviceTweaks()
{
    if (m_all)
        m_all->fail(std::make_exception_ptr(AndroidRuntimeCancelled()));
}

DeviceTweaks::Id DeviceTweaks::add(Tweak tweak)
{
    m_tweaks.push_back(std::move(tweak));
    return m_tweaks.size() - 1;
}

void DeviceTweaks::whenChanged(const QStringList &settings, std::function<void()> react)
{
    connect(
        m_commands->platform().settings.get(), &SettingsStore::changed, this,
        [settings, react = std::move(react)](const QString &key) {
            if (settings.contains(key))
                react();
        });
}

void DeviceTweaks::settingChanged(const QString &key)
{
    for (Id id = 0; id < m_tweaks.size(); ++id) {
        if (m_tweaks[id].settings.contains(key))
            apply(id);
    }
}

void DeviceTweaks::apply(Id id)
{
    m_wanted.insert(id);
    if (!m_working)
        fireAndForget(m_commands->sharedLog(), work());
}

Task<> DeviceTweaks::applyAll()
{
    if (!m_all)
        m_all.emplace();
    const auto all = *m_all;
    if (!m_working)
        fireAndForget(m_commands->sharedLog(), work());
    co_await all;
}

DeviceTweaks::Batch DeviceTweaks::batch(const std::set<Id> &ids) const
{
    std::vector<Id> order(ids.begin(), ids.end());
    std::stable_sort(order.begin(), order.end(), [this](Id a, Id b) { return m_tweaks[a].stage < m_tweaks[b].stage; });
    Batch result;
    for (const auto id : order)
        result.push_back(m_tweaks[id].apply);
    return result;
}

Task<> DeviceTweaks::work()
{
    const QPointer<DeviceTweaks> self(this);
    const auto commands = m_commands;
    m_working = true;
    // Who asks within one turn of the event loop asks once: a command writes a setting and asks besides.
    co_await nextTurn(*commands->platform().executor);
    while (self && (m_all || !m_wanted.empty())) {
        const auto all = std::exchange(m_all, std::nullopt);
        auto ids = std::exchange(m_wanted, {});
        if (all) {
            for (Id id = 0; id < m_tweaks.size(); ++id)
                ids.insert(id);
        }
        auto run = [commands, tweaks = batch(ids), isReady = all.has_value()] {
            if (!isReady && !commands->deviceIsBooted())
                return;
            for (const auto &tweak : tweaks)
                tweak(*commands);
        };
        auto running = background(*commands->platform().executor, std::move(run));
        std::optional<QString> failure;
        try {
            co_await running;
        } catch (const std::exception &error) {
            failure = descriptionOf(error);
        }
        // A device that isn't all that it should be is still a good device.
        if (failure)
            commands->log().write(QStringLiteral("device tweaks failed error=%1").arg(*failure));
        if (auto waiting = all)
            waiting->finish();
    }
    if (self)
        m_working = false;
}

} // namespace quillnest
