#pragma once

#include "fakes/FakeArchives.h"
#include "fakes/FakeDesktop.h"
#include "fakes/FakeInstanceDoor.h"
#include "fakes/ManualClock.h"
#include "fakes/ManualExecutor.h"
#include "fakes/MemorySettings.h"
#include "fakes/ScriptedProcesses.h"
#include "platform/Platform.h"
#include "platform/Tasks.h"
#include "platform/posix/PosixLocalSockets.h"

#include <QTemporaryDir>

#include <map>
#include <optional>
#include <stdexcept>

namespace quillnest
{

/// The real ones, among users of a test's making.
class FakeLocalSockets : public PosixLocalSockets
{
public:
    SocketOwner listenerOwner(std::uint16_t port) const override
    {
        const auto found = listeners.find(port);
        return found == listeners.end() ? SocketOwner::nobody : found->second;
    }

    std::map<std::uint16_t, SocketOwner> listeners;
};

/// A whole platform of fakes, with a temporary folder as the user's home. `platform` is what the code under test gets;
/// the other members are the same objects under their own types. Drawing and sockets are the real ones; what is named
/// nowhere is null.
struct FakePlatform {
    std::unique_ptr<QTemporaryDir> home;
    Platform platform;
    std::shared_ptr<ManualClock> clock;
    std::shared_ptr<ManualExecutor> executor;
    std::shared_ptr<MemorySettings> settings;
    std::shared_ptr<ScriptedProcesses> processes;
    std::shared_ptr<FakeLocalSockets> sockets;
    std::shared_ptr<FakeArchives> archives;
    std::shared_ptr<FakeCommandChannel> commands;
    std::shared_ptr<FakePasteboard> pasteboard;
    std::shared_ptr<FakeScreens> screens;
    std::shared_ptr<FakeAppearance> appearance;
    std::shared_ptr<FakeAlerts> alerts;
    std::shared_ptr<FakeFilePanels> filePanels;
    std::shared_ptr<FakeFileManager> fileManager;
    std::shared_ptr<FakeLoginItems> loginItems;
    std::shared_ptr<FakeInstanceDoor> door;
    std::shared_ptr<FakeForeignWindows> foreignWindows;

    /// A path below the home folder.
    QString path(const QString &relative) const { return home->path() + QLatin1Char('/') + relative; }

    /// Writes a file below the home folder, with the folders above it; returns its absolute path.
    QString writeFile(const QString &relative, const QByteArray &content, bool executable = false) const;

    /// The content of a file; absent if it can't be read. `path` may be relative to the home folder.
    std::optional<QByteArray> readFile(const QString &path) const;

    /// Runs all that waits, for the main thread, the background and Qt's event loop, without moving time.
    void settle() const;

    /// Settles, and moves time from one timer to the next until `done` answers true; throws std::runtime_error when
    /// nothing is left that could change the answer, or after an hour of the clock's time.
    void runUntil(const std::function<bool()> &done) const;
};

FakePlatform fakePlatform(HostProfile profile = HostProfile::linuxX86_64());

/// Drives a task to its end, which may take an hour of the clock's time; returns its value or throws what it threw, or
/// std::runtime_error if it can't get on.
template <typename T> T runToEnd(const FakePlatform &fakes, Task<T> task)
{
    struct Outcome {
        bool ended = false;
        std::exception_ptr error;
        std::optional<T> value;
    };
    const auto outcome = std::make_shared<Outcome>();
    [](std::shared_ptr<Outcome> result, Task<T> running) -> Task<> {
        try {
            result->value.emplace(co_await running);
        } catch (...) {
            result->error = std::current_exception();
        }
        result->ended = true;
    }(outcome, std::move(task));
    fakes.runUntil([&outcome] { return outcome->ended; });
    if (outcome->error)
        std::rethrow_exception(outcome->error);
    return std::move(*outcome->value);
}

void runToEnd(const FakePlatform &fakes, Task<> task);

} // namespace quillnest
