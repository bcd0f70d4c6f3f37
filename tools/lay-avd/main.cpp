// quillnest-avd API...: writes the definitions of the managed virtual devices for these API levels.

#include "platform/HostServices.h"
#include "platform/Platform.h"
#include "runtime/AVDDefinition.h"
#include "runtime/AndroidRuntimePaths.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char **argv)
{
    using namespace quillnest;
    QCoreApplication application(argc, argv);
    Platform platform;
    platform.profile = hostProfile();
    platform.folders = hostFolders();
    try {
        for (const auto &api : QCoreApplication::arguments().mid(1)) {
            const auto paths = AndroidRuntimePaths::managed(platform, api.toInt());
            AVDDefinition::write(paths, platform.profile);
            std::printf("%s %s\n", qUtf8Printable(paths.avdName), paths.isComplete() ? "complete" : "incomplete");
        }
    } catch (const std::exception &error) {
        std::fprintf(stderr, "quillnest-avd: %s\n", error.what());
        return 1;
    }
}
