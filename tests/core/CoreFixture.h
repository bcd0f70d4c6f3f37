#pragma once

#include "core/AppLibraryStore.h"
#include "fakes/FakeLocks.h"
#include "fakes/FakeNetwork.h"
#include "package/PackageBuilder.h"
#include "runtime/AndroidRuntimeCLI.h"
#include "runtime/AndroidRuntimeProvisioner.h"
#include "runtime/RuntimeFixture.h"
#include "windows/AndroidWindowRegistry.h"

namespace quillnest
{

/// A store on a complete runtime whose device is scripted. The packages that were put there have manifests.
class CoreFixture : public RuntimeFixture
{
protected:
    CoreFixture()
    {
        fakes.platform.profile.developmentScrcpy = fakes.writeFile(QStringLiteral("dev/bin/scrcpy"), "", true);
        fakes.processes->on(QStringLiteral("pm list packages -3"), [this](const ChildCommand &) {
            return ScriptedProcesses::Answer{installed};
        });
        fakes.processes->on(QStringLiteral("resolve-activity"), [](const ChildCommand &command) {
            return ScriptedProcesses::Answer{command.arguments.last().toUtf8() + "/.MainActivity\n"};
        });
        makeStore();
    }

    AppLibraryStore::Services services()
    {
        return {fakes.platform, log, notifications, *runtime, *registry, *provisioner, deviceCleaned, locks};
    }

    /// A store as a new process would have it, on the same settings.
    void makeStore()
    {
        store.reset();
        registry.reset();
        fakes.platform.network = network;
        provisioner = std::make_unique<AndroidRuntimeProvisioner>(fakes.platform);
        runtime = std::make_unique<AndroidRuntimeCLI>(fakes.platform, log);
        registry = std::make_unique<AndroidWindowRegistry>(
            WindowServices{fakes.platform, log, notifications, runtime->commands(), locks, nullptr});
        store = std::make_unique<AppLibraryStore>(services());
        fakes.settle();
    }

    /// From now on launches wait until `deviceCleaned` ends.
    void cleanDevice() { deviceCleaned = {}; }

    /// Writes a package file with a manifest that names a package and, unless it is empty, a label.
    QString putPackage(const QString &relative, const std::string &name, const std::string &label)
    {
        const auto path = fakes.writeFile(relative, "content of " + relative.toUtf8());
        const auto bytes = build::xmlFile(
            {build::pool({"manifest", "package", name, "application", "label", label}),
             build::startElement(0, {{1, 2}}),
             build::startElement(
                 3, label.empty() ? std::vector<build::Attribute>{} : std::vector{build::Attribute{4, 5}}),
             build::endElement(3), build::endElement(0)});
        fakes.archives->packages[path.toStdString()] = {{"AndroidManifest.xml", bytes}};
        return path;
    }

    void add(const QStringList &files)
    {
        QList<QUrl> urls;
        for (const auto &path : files)
            urls.append(QUrl::fromLocalFile(path));
        store->addFiles(urls);
        fakes.settle();
    }

    /// Adds an app whose package has its label as its name, in lower case.
    MobileApp addApp(const QString &label)
    {
        const auto name = "org.example." + label.toLower().remove(QLatin1Char(' ')).toStdString();
        add({putPackage(QStringLiteral("Apps/%1.apk").arg(label), name, label.toStdString())});
        return store->apps().back();
    }

    QStringList names(const std::vector<MobileApp> &apps) const
    {
        QStringList result;
        for (const auto &app : apps)
            result.append(app.name);
        return result;
    }

    bool hasLogged(const QString &line) const { return logLines().contains(line); }

    QByteArray installed;
    std::shared_ptr<ChangeNotifications> notifications = std::make_shared<ChangeNotifications>();
    std::shared_ptr<FakeLocks> locks = std::make_shared<FakeLocks>();
    Completion<> deviceCleaned = endedCompletion();
    std::shared_ptr<FakeNetwork> network = std::make_shared<FakeNetwork>();
    std::unique_ptr<AndroidRuntimeProvisioner> provisioner;
    std::unique_ptr<AndroidRuntimeCLI> runtime;
    std::unique_ptr<AndroidWindowRegistry> registry;
    std::unique_ptr<AppLibraryStore> store;
};

} // namespace quillnest
