#pragma once

#include "CoreFixture.h"
#include "windows/AndroidWindowSession.h"
#include "windows/LoopbackDevice.h"
#include "windows/WindowFakes.h"

namespace quillnest
{

/// A store whose apps open real windows. One app at a time is off, so that a test says so where it matters.
class LaunchFixture : public virtual CoreFixture
{
protected:
    LaunchFixture()
    {
        fakes.platform.video = video;
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
    }

    ~LaunchFixture() override
    {
        store.reset();
        registry.reset();
        for (const auto &renderer : video->renderers)
            EXPECT_TRUE(waitFor([&renderer] { return renderer.use_count() == 1; }))
                << "a stream or a view outlives its window";
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
        return dynamic_cast<AndroidWindowSession &>(*registry->session(app.id));
    }

    using State = AppLibraryStore::AndroidState;
    LoopbackDevice loopback{fakes};
    std::shared_ptr<FakeVideo> video = std::make_shared<FakeVideo>();
};

} // namespace quillnest
