#pragma once

#include "platform/ChildProcesses.h"
#include "platform/Tasks.h"
#include "runtime/AndroidCommands.h"

#include <QPointer>

#include <memory>
#include <optional>

namespace quillnest
{

class DeviceTweaks;

/// Keeps the one device alive: takes over what is there, waits for what is coming up, replaces what is sick or of the
/// wrong version, and starts what is missing. All of it on the main thread, with adb in the background.
///
/// Its coroutines hold the object by its shared pointer, so it may be let go at any time.
class EmulatorBoot
{
public:
    using Self = std::shared_ptr<EmulatorBoot>;

    EmulatorBoot(std::shared_ptr<const AndroidCommands> commands, DeviceTweaks &tweaks);

    /// Waits for the boot in flight, or begins one. Each waiter gets the boot's failure.
    ///
    /// Whoever has just asked whether the device is booted passes the answer on, which saves asking again.
    static Task<> ensure(Self self, std::optional<bool> isBooted = std::nullopt);

    /// The boot in flight ends with AndroidRuntimeCancelled at its next step. The device is left as it is.
    void cancel() { m_cancelled = true; }

    /// Ends the emulator of a boot in flight, which may not be far enough yet to obey adb.
    void endUnfinished() const
    {
        if (m_flight && emulatorIsRunning())
            m_emulatorProcess->terminate();
    }

    /// Throws AndroidRuntimeCancelled after `cancel`.
    void throwIfCancelled() const;

private:
    static Task<> fly(Self self, Completion<> flight, std::optional<bool> isBooted);
    static Task<> boot(Self self, std::optional<bool> isBooted);
    static Task<> waitUntilGone(Self self);
    static Task<> startDevice(Self self);
    /// False when the device was lost meanwhile.
    static Task<bool> waitForBoot(Self self);
    static Task<> waitForInternet(Self self);
    static Task<> applyTweaks(Self self);

    static Task<> pause(Self self, Clock::Duration duration);
    static Task<> tell(Self self, void (AndroidCommands::*command)() const);
    static Task<bool> ask(Self self, bool (AndroidCommands::*check)() const);
    /// Asks again when adb fails, and throws its failure when it goes on failing.
    static Task<bool> isListed(Self self);
    static Task<> refuseAnothers(Self self);
    static Task<int> runningApi(Self self);

    bool emulatorIsRunning() const { return m_emulatorProcess && m_emulatorProcess->isRunning(); }
    void launchEmulator();

    const std::shared_ptr<const AndroidCommands> m_commands;
    /// Goes with the facade, which cancels the boot.
    const QPointer<DeviceTweaks> m_tweaks;
    bool m_cancelled = false;
    /// The boot that all callers wait for.
    std::optional<Completion<>> m_flight;
    /// The emulator that this process started; none for a device that it took over. While it is alive no second one is
    /// started and a boot isn't given up before its time.
    std::shared_ptr<RunningChild> m_emulatorProcess;
};

} // namespace quillnest
