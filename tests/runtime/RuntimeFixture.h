#pragma once

#include "fakes/FakePlatform.h"
#include "runtime/AndroidCommands.h"
#include "runtime/AndroidRuntimePaths.h"

#include <gtest/gtest.h>

namespace quillnest
{

/// A platform of fakes whose managed runtime for API 35 is complete, and a device behind a scripted adb.
class RuntimeFixture : public ::testing::Test
{
protected:
    RuntimeFixture()
        : log(std::make_shared<QuillnestLog>(
            fakes.clock, fakes.platform.folders.logs, QStringLiteral("quillnest.log"), false))
        , paths(AndroidRuntimePaths::managed(fakes.platform, 35))
    {
        install(35);
        scriptDevice();
    }

    /// Puts the files of a managed installation into their places.
    void install(int api) { place(AndroidRuntimePaths::managed(fakes.platform, api)); }

    void place(const AndroidRuntimePaths &where)
    {
        const auto relative = [this](const QString &path) { return path.mid(fakes.home->path().size() + 1); };
        fakes.writeFile(relative(where.adb()), "", true);
        fakes.writeFile(relative(where.emulator()), "", true);
        fakes.writeFile(relative(where.systemImage()), "");
        if (where.avdHome) {
            const auto stem = relative(*where.avdHome) + QLatin1Char('/') + where.avdName;
            fakes.writeFile(stem + QStringLiteral(".ini"), "");
            fakes.writeFile(stem + QStringLiteral(".avd/config.ini"), "hw.audioInput=no\n");
        }
    }

    /// What the device answers, changed by tests and by the commands that it gets.
    struct Device {
        bool listed = false;
        bool booted = false;
        bool healthy = true;
        QByteArray api = "35";
        QByteArray avd = "Quillnest";
        bool validated = true;
        /// Whether "emu kill" makes it go.
        bool obeysKill = true;
        /// Looks at it until an emulator that was started has booted.
        int looksUntilBooted = 3;
    };

    void scriptDevice()
    {
        using Answer = ScriptedProcesses::Answer;
        auto &processes = *fakes.processes;
        processes.on(QStringLiteral("getprop sys.boot_completed"), [this](const ChildCommand &) {
            if (device.listed && !device.booted && --device.looksUntilBooted <= 0)
                device.booted = true;
            return Answer{device.booted ? "1\n" : "", device.listed ? 0 : 1};
        });
        processes.on(QStringLiteral("getprop ro.build.version.sdk"), [this](const ChildCommand &) {
            return Answer{device.api + "\n"};
        });
        processes.on(QStringLiteral("adb devices"), [this](const ChildCommand &) {
            return Answer{
                device.listed ? "List of devices attached\nemulator-5556\toffline\n\n"
                              : "List of devices attached\n\n"};
        });
        processes.on(QStringLiteral("emu avd name"), [this](const ChildCommand &) {
            return device.listed ? Answer{device.avd + "\r\nOK\r\n"} : Answer{"error: device not found", 1};
        });
        processes.on(QStringLiteral("service check package"), [this](const ChildCommand &) {
            return Answer{device.healthy ? "Service package: found\n" : "Service package: not found\n"};
        });
        processes.on(QStringLiteral("emu kill"), [this](const ChildCommand &) {
            if (device.obeysKill)
                device = {.looksUntilBooted = device.looksUntilBooted};
            return Answer{"OK\n"};
        });
        processes.on(QStringLiteral("dumpsys connectivity"), [this](const ChildCommand &) {
            return Answer{device.validated ? "NetworkAgentInfo VALIDATED" : "NetworkAgentInfo"};
        });
        processes.onStart(QStringLiteral("emulator/emulator"), [this](ScriptedChild &) { device.listed = true; });
    }

    QStringList logLines() const { return log->tail(1000).split(QLatin1Char('\n'), Qt::SkipEmptyParts); }

    FakePlatform fakes = fakePlatform();
    std::shared_ptr<QuillnestLog> log;
    AndroidRuntimePaths paths;
    Device device;
};

} // namespace quillnest
