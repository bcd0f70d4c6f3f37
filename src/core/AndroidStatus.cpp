#include "core/AndroidStatus.h"

#include "base/FireAndForget.h"
#include "runtime/AndroidRuntimeCLI.h"

#include <QPointer>

namespace quillnest
{

AndroidStatus::AndroidStatus(const StoreServices &services) : m_services(services)
{
    connect(services.notifications.get(), &ChangeNotifications::runtimeChanged, this, [this] { set(State::sleeping); });
}

void AndroidStatus::set(State state)
{
    if (m_state == state)
        return;
    m_state = state;
    Q_EMIT changed();
}

void AndroidStatus::refresh()
{
    if (!AndroidRuntimePaths::current(m_services.platform).isComplete()) {
        set(State::notSetUp);
        return;
    }
    fireAndForget(m_services.log, ask());
}

Task<> AndroidStatus::ask()
{
    const QPointer<AndroidStatus> self(this);
    auto look = [commands = m_services.runtime.commands()] { return commands->deviceIsBooted(); };
    auto looking = background(*m_services.platform.executor, std::move(look));
    const bool booted = co_await looking;
    if (self && m_state != State::starting)
        set(booted ? State::ready : State::sleeping);
}

} // namespace quillnest
