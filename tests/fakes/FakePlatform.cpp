#include "fakes/FakePlatform.h"

#include "platform/desktop/QtDrawing.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace quillnest
{

QString FakePlatform::writeFile(const QString &relative, const QByteArray &content, bool executable) const
{
    const auto absolute = path(relative);
    QDir().mkpath(QFileInfo(absolute).path());
    QFile file(absolute);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        throw std::runtime_error("can't write " + absolute.toStdString());
    file.close();
    if (executable)
        file.setPermissions(file.permissions() | QFileDevice::ExeOwner | QFileDevice::ExeUser);
    return absolute;
}

std::optional<QByteArray> FakePlatform::readFile(const QString &path) const
{
    QFile file(QDir(home->path()).absoluteFilePath(path));
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return file.readAll();
}

void FakePlatform::settle() const
{
    do {
        if (QCoreApplication::instance())
            QCoreApplication::processEvents();
    } while (executor->drain() > 0);
}

void FakePlatform::runUntil(const std::function<bool()> &done) const
{
    const auto limit = clock->monotonic() + std::chrono::hours(1);
    for (settle(); !done(); settle()) {
        if (clock->monotonic() > limit)
            throw std::runtime_error("not done after an hour");
        if (!clock->advanceToNext())
            throw std::runtime_error("nothing left to wait for");
    }
}

FakePlatform fakePlatform(HostProfile profile)
{
    FakePlatform fakes;
    fakes.home = std::make_unique<QTemporaryDir>();
    fakes.clock = std::make_shared<ManualClock>();
    fakes.executor = std::make_shared<ManualExecutor>();
    fakes.settings = std::make_shared<MemorySettings>();
    fakes.processes = std::make_shared<ScriptedProcesses>();
    fakes.sockets = std::make_shared<FakeLocalSockets>();
    fakes.archives = std::make_shared<FakeArchives>();
    fakes.commands = std::make_shared<FakeCommandChannel>();
    fakes.pasteboard = std::make_shared<FakePasteboard>();
    fakes.screens = std::make_shared<FakeScreens>();
    fakes.appearance = std::make_shared<FakeAppearance>();
    fakes.alerts = std::make_shared<FakeAlerts>();
    fakes.filePanels = std::make_shared<FakeFilePanels>();
    fakes.fileManager = std::make_shared<FakeFileManager>();
    fakes.loginItems = std::make_shared<FakeLoginItems>();
    fakes.door = std::make_shared<FakeInstanceDoor>();
    fakes.foreignWindows = std::make_shared<FakeForeignWindows>();

    // The folders needn't exist, but temporary files need one.
    const auto temporary = fakes.path(QStringLiteral("tmp"));
    QDir().mkpath(temporary);
    auto &platform = fakes.platform;
    platform.profile = std::move(profile);
    platform.folders = {
        .home = fakes.home->path(),
        .applicationSupport = fakes.path(QStringLiteral("Application Support")),
        .logs = fakes.path(QStringLiteral("Logs/Quillnest")),
        .temporary = temporary,
        .bundle = fakes.path(QStringLiteral("Quillnest.app")),
    };
    platform.clock = fakes.clock;
    platform.executor = fakes.executor;
    platform.settings = fakes.settings;
    platform.processes = fakes.processes;
    platform.archives = fakes.archives;
    platform.commands = fakes.commands;
    platform.pasteboard = fakes.pasteboard;
    platform.screens = fakes.screens;
    platform.appearance = fakes.appearance;
    platform.drawing = std::make_shared<QtDrawing>();
    platform.sockets = fakes.sockets;
    platform.alerts = fakes.alerts;
    platform.filePanels = fakes.filePanels;
    platform.fileManager = fakes.fileManager;
    platform.loginItems = fakes.loginItems;
    platform.door = fakes.door;
    platform.foreignWindows = fakes.foreignWindows;
    return fakes;
}

void runToEnd(const FakePlatform &fakes, Task<> task)
{
    auto whole = [](Task<> running) -> Task<bool> {
        co_await running;
        co_return true;
    }(std::move(task));
    runToEnd<bool>(fakes, std::move(whole));
}

} // namespace quillnest
