#include "runtime/EmulatorBoot.h"

#include "platform/Files.h"
#include "runtime/AndroidHardware.h"
#include "runtime/AndroidRuntimeError.h"
#include "runtime/DeviceTweaks.h"

#include <QFileInfo>

#include <utility>

namespace quillnest
{

using namespace std::chrono_literals;

namespace
{
constexpr auto poll = 1s;
constexpr auto processPoll = 500ms;
constexpr int dyingDeviceRounds = 30;
constexpr int dyingProcessRounds = 30;
constexpr int bootRounds = 240;
constexpr int lostEmulatorRounds = 15;
constexpr int lostDeviceRounds = 3;
constexpr int networkRounds = 30;
constexpr int failedLists = 5;
} // namespace

EmulatorBoot::EmulatorBoot(std::shared_ptr<const AndroidCommands> commands, DeviceTweaks &tweaks)
    : m_commands(std::move(commands)), m_tweaks(&tweaks)
{
}

void EmulatorBoot::throwIfCancelled() const
{
    if (m_cancelled)
        throw AndroidRuntimeCancelled();
}

Task<> EmulatorBoot::ensure(Self self, std::optional<bool> isBooted)
{
    self->throwIfCancelled();
    if (!self->m_flight) {
        // The slot is filled before the boot begins, and the task goes on without its handle.
        self->m_flight.emplace();
        fly(self, *self->m_flight, isBooted);
    }
    const auto flight = *self->m_flight;
    co_await flight;
}

Task<> EmulatorBoot::fly(Self self, Completion<> flight, std::optional<bool> isBooted)
{
    std::exception_ptr error;
    try {
        co_await boot(self, isBooted);
    } catch (...) {
        error = std::current_exception();
    }
    // Whoever asks from the next turn of the event loop on begins a boot of their own.
    self->m_commands->platform().executor->onMain([self] { self->m_flight.reset(); });
    if (error)
        flight.fail(error);
    else
        flight.finish();
}

Task<> EmulatorBoot::boot(Self self, std::optional<bool> isBooted)
{
    auto &log = self->m_commands->log();

    if (!isBooted)
        isBooted = co_await ask(self, &AndroidCommands::deviceIsBooted);
    if (*isBooted) {
        const int running = co_await runningApi(self);
        const int wanted = self->m_commands->paths().api;
        if (running != 0 && running != wanted) {
            log.write(QStringLiteral("android version change: running API %1, wanted API %2 - restarting")
                          .arg(running)
                          .arg(wanted));
            co_await tell(self, &AndroidCommands::stopAllApps);
            co_await tell(self, &AndroidCommands::killDevice);
            co_await waitUntilGone(self);
        } else if (co_await ask(self, &AndroidCommands::androidIsHealthy)) {
            co_return;
        }
    }

    // A second look: the device was sick a moment ago, or should have gone by now.
    if (co_await ask(self, &AndroidCommands::deviceIsBooted)) {
        if (co_await ask(self, &AndroidCommands::androidIsHealthy))
            co_return;
        log.write(QStringLiteral("android unhealthy (package service missing) - restarting it"));
        co_await tell(self, &AndroidCommands::killDevice);
        co_await waitUntilGone(self);
    }

    bool listed = co_await isListed(self);
    // adb goes on listing a device for a moment after its emulator has died; waiting for that one to boot would be in
    // vain.
    if (listed && self->m_emulatorProcess && !self->emulatorIsRunning()) {
        co_await waitUntilGone(self);
        listed = co_await isListed(self);
    }
    co_await refuseAnothers(self);
    if (!listed)
        co_await startDevice(self);
    bool booted = co_await waitForBoot(self);
    if (!booted && !self->m_emulatorProcess) {
        // The device of an earlier run was on its way out and not up.
        co_await startDevice(self);
        booted = co_await waitForBoot(self);
    }
    if (!booted)
        throw AndroidRuntimeError::bootTimeout();
    co_await applyTweaks(self);
    co_await waitForInternet(self);
    // Ours may have died meanwhile, and another have come.
    co_await refuseAnothers(self);
}

Task<> EmulatorBoot::waitUntilGone(Self self)
{
    bool listed = co_await isListed(self);
    for (int round = 0; listed && round < dyingDeviceRounds; ++round) {
        co_await pause(self, poll);
        listed = co_await isListed(self);
    }
    self->m_emulatorProcess.reset();
}

Task<> EmulatorBoot::startDevice(Self self)
{
    // An emulator of ours that adb doesn't list has just been launched or is on its way out.
    for (int round = 0; round < dyingProcessRounds && self->emulatorIsRunning(); ++round)
        co_await pause(self, processPoll);
    if (!self->emulatorIsRunning())
        self->m_emulatorProcess.reset();
    if (!isExecutableFile(self->m_commands->paths().emulator()))
        throw AndroidRuntimeError::toolMissing(QStringLiteral("Android Emulator"));
    if (!self->m_emulatorProcess)
        self->launchEmulator();
}

void EmulatorBoot::launchEmulator()
{
    const auto paths = m_commands->paths();
    const auto &platform = m_commands->platform();
    AndroidHardware::apply(paths, *platform.settings, platform.folders);

    ChildCommand command;
    command.program = paths.emulator();
    command.arguments
        = {QLatin1Char('@') + paths.avdName, QStringLiteral("-port"),         AndroidCommands::consolePort(),
           QStringLiteral("-no-window"),     QStringLiteral("-no-boot-anim"), QStringLiteral("-gpu"),
           QStringLiteral("host"),           QStringLiteral("-memory"),       QStringLiteral("2048"),
           QStringLiteral("-no-snapshot")};
    command.environment[QStringLiteral("ANDROID_SDK_ROOT")] = paths.sdkRoot;
    command.environment[QStringLiteral("ANDROID_HOME")] = paths.sdkRoot;
    if (paths.avdHome)
        command.environment[QStringLiteral("ANDROID_AVD_HOME")] = *paths.avdHome;
    command.input = ChildCommand::Input::null;
    command.output = ChildCommand::Output::null;
    command.errors = ChildCommand::Errors::null;
    const auto managed = paths.isManaged ? QStringLiteral("true") : QStringLiteral("false");
    m_commands->log().write(
        QStringLiteral("starting emulator avd=%1 managed=%2 sdk=%3").arg(paths.avdName, managed, paths.sdkRoot));
    m_emulatorProcess = platform.processes->start(command);
}

Task<bool> EmulatorBoot::waitForBoot(Self self)
{
    // A launcher of ours that ends while its device comes up gets longer than a device of an earlier run.
    const int limit = self->m_emulatorProcess ? lostEmulatorRounds : lostDeviceRounds;
    int roundsWithoutDevice = 0;
    for (int round = 0; round < bootRounds && roundsWithoutDevice < limit; ++round) {
        if (co_await ask(self, &AndroidCommands::deviceIsBooted))
            co_return true;
        // With no emulator of ours and nothing that adb would list, nobody is left who might boot.
        bool isThere = self->emulatorIsRunning();
        if (!isThere)
            isThere = co_await isListed(self);
        roundsWithoutDevice = isThere ? 0 : roundsWithoutDevice + 1;
        co_await pause(self, poll);
    }
    if (roundsWithoutDevice < limit) {
        co_await refuseAnothers(self);
        throw AndroidRuntimeError::bootTimeout();
    }
    co_return false;
}

Task<> EmulatorBoot::waitForInternet(Self self)
{
    auto &log = self->m_commands->log();
    for (int round = 0; round < networkRounds; ++round) {
        if (co_await ask(self, &AndroidCommands::internetIsValidated)) {
            log.write(QStringLiteral("android network validated"));
            co_return;
        }
        co_await pause(self, poll);
    }
    log.write(QStringLiteral("android network not validated after 30s"));
}

Task<> EmulatorBoot::applyTweaks(Self self)
{
    if (!self->m_tweaks)
        throw AndroidRuntimeCancelled();
    auto applying = self->m_tweaks->applyAll();
    co_await applying;
    self->throwIfCancelled();
}

Task<> EmulatorBoot::pause(Self self, Clock::Duration duration)
{
    co_await sleepFor(*self->m_commands->platform().clock, duration);
    self->throwIfCancelled();
}

Task<> EmulatorBoot::tell(Self self, void (AndroidCommands::*command)() const)
{
    auto work = [commands = self->m_commands, command] { (commands.get()->*command)(); };
    co_await background(*self->m_commands->platform().executor, std::move(work));
    self->throwIfCancelled();
}

Task<bool> EmulatorBoot::ask(Self self, bool (AndroidCommands::*check)() const)
{
    auto work = [commands = self->m_commands, check] { return (commands.get()->*check)(); };
    const bool answer = co_await background(*self->m_commands->platform().executor, std::move(work));
    self->throwIfCancelled();
    co_return answer;
}

Task<bool> EmulatorBoot::isListed(Self self)
{
    // Taken for a "no", a failure would start a second emulator beside the first.
    for (int tries = 1;; ++tries) {
        std::exception_ptr failure;
        try {
            co_return co_await ask(self, &AndroidCommands::deviceIsListed);
        } catch (const AndroidRuntimeCancelled &) {
            throw;
        } catch (const AndroidRuntimeError &error) {
            // Without tools there is no device either, and the start says which one is missing.
            if (error.errorCase() == AndroidRuntimeError::Case::toolMissing)
                co_return false;
            failure = std::current_exception();
        } catch (const std::exception &) {
            failure = std::current_exception();
        }
        if (tries == failedLists)
            std::rethrow_exception(failure);
        co_await pause(self, poll);
    }
}

Task<> EmulatorBoot::refuseAnothers(Self self)
{
    auto look = [commands = self->m_commands] { return commands->whoseDevice(); };
    const auto whose = co_await background(*self->m_commands->platform().executor, std::move(look));
    self->throwIfCancelled();
    if (whose == AndroidCommands::Whose::anothers)
        throw AndroidRuntimeError::portTaken(AndroidCommands::consolePort());
}

Task<int> EmulatorBoot::runningApi(Self self)
{
    auto work = [commands = self->m_commands] { return commands->runningApi(); };
    const int api = co_await background(*self->m_commands->platform().executor, std::move(work));
    self->throwIfCancelled();
    co_return api;
}

} // namespace quillnest
