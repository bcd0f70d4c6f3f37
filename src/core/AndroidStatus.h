#pragma once

#include "core/StoreServices.h"

#include <QObject>

namespace quillnest
{

/// What the interface is told about the device. Main thread.
class AndroidStatus : public QObject
{
    Q_OBJECT

public:
    enum class State { ready, starting, sleeping, notSetUp };

    explicit AndroidStatus(const StoreServices &services);

    State state() const { return m_state; }
    void set(State state);

    /// Asks the device; never overrides a start in progress, except by an incomplete runtime.
    void refresh();

Q_SIGNALS:
    void changed();

private:
    Task<> ask();

    const StoreServices &m_services;
    State m_state = State::sleeping;
};

} // namespace quillnest
