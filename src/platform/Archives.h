#pragma once

#include <QString>

namespace quillnest
{

/// Archives from outside. Blocks; any thread but the main one.
class Archives
{
public:
    virtual ~Archives() = default;

    /// Unpacks a zip file into a folder that is there, over what lies in it, with the files' permissions and the links
    /// that stay inside. Nothing is written outside the folder, and what is written appears there only when all has
    /// been unpacked. False for an archive that is broken, that doesn't fit on the disk, or that holds a name or a
    /// link that leads out of the folder. Throws LaunchError when the host's tool can't be started.
    virtual bool unpack(const QString &archive, const QString &folder) = 0;
};

} // namespace quillnest
