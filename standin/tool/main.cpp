// The device tool: every command of the device's shell that only Android has. Linked statically, because it runs
// inside the device's tree, where there are no libraries. It knows no command by itself: it hands its name and
// arguments to the device and copies the answer. Called as "enter" on the host it is the way into the tree.

#include "tool/EnterTree.h"
#include "tool/RemoteCommand.h"

#include <cstring>

int main(int argc, char **argv)
{
    const char *slash = std::strrchr(argv[0], '/');
    const bool onHost = slash != nullptr && std::strcmp(slash + 1, "standin-device-tool") == 0;
    if (onHost && argc >= 4 && std::strcmp(argv[1], "enter") == 0)
        return standin::enterTree(argv[2], argv + 3);
    return standin::runRemoteCommand(argc, argv);
}
