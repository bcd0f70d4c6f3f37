#pragma once

#include "CoreFixture.h"
#include "windows/LoopbackDevice.h"
#include "windows/WindowFakes.h"

namespace quillnest
{

/// A store whose apps open real windows. One app at a time is off, so that a test says so where it matters.
class LaunchFixture : public CoreFixture
{
protected:
    LaunchFixture()
    {
        fakes.platform.video = std::make_shared<FakeVideo>();
        fakes.platform.symbols = std::make_shared<FakeSymbols>();
        fakes.screens->composited = false;
        fakes.screens->screens = {{QRect(0, 0, 1600, 1200), QRect(0, 30, 1600, 1170), 1.0}};
        fakes.settings->setValue(QStringLiteral("QuillnestSingleApp"), false);
        fakes.processes->on(QStringLiteral("adb -s emulator-5556 install"), [this](const ChildCommand &command) {
            const auto &path = command.arguments.last();
            if (!QFile::exists(path))
                return ScriptedProcesses::Answer{"adb: failed to stat " + path.toUtf8() + "\n", 1};
            installed += "package:org.example." + QFileInfo(path).completeBaseName().toLower().toUtf8() + "\n";
            return ScriptedProcesses::Answer{"Success\n"};
        });
        makeStore();
        watchClients(*notifications, *registry);
    }

    ~LaunchFixture() override
    {
        store.reset();
        registry.reset();
        for (const auto &client : clients)
            EXPECT_TRUE(waitFor([&client] { return client.expired(); })) << "a client outlives its window";
    }

    void watchClients(ChangeNotifications &changes, AndroidWindowRegistry &windows)
    {
        QObject::connect(&changes, &ChangeNotifications::sessionsChanged, &changes, [this, &windows] {
            for (const auto &[id, session] : windows.sessions())
                clients.push_back(session->client().weak_from_this());
        });
    }

    bool waitFor(const std::function<bool()> &condition) const { return comesTrue(fakes, condition); }

    void deviceIsUp()
    {
        device.listed = true;
        device.booted = true;
    }

    /// Opens an app and moves time on until its window stands.
    AndroidWindowSession &open(const MobileApp &app)
    {
        store->launch(app);
        fakes.runUntil([&] { return registry->session(app.id) != nullptr; });
        return *registry->session(app.id);
    }

    using State = AppLibraryStore::AndroidState;
    LoopbackDevice loopback{fakes};
    std::vector<std::weak_ptr<AndroidStreamClient>> clients;
};

} // namespace quillnest
