#include "platform/posix/ZipArchives.h"

#include "platform/posix/StagingFolder.h"
#include "platform/posix/UnpackedTree.h"
#include "platform/posix/Volume.h"
#include "platform/posix/ZipReader.h"
#include "platform/posix/ZipUnpacker.h"
#include "platform/posix/ZipWriter.h"

#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

#include <filesystem>

namespace quillnest
{

namespace
{

namespace fs = std::filesystem;

fs::path native(const QString &path)
{
    return QFile::encodeName(path).toStdString();
}

bool isSameVolume(const fs::path &first, const fs::path &second)
{
    struct stat one;
    struct stat other;
    return ::stat(first.c_str(), &one) == 0 && ::stat(second.c_str(), &other) == 0 && one.st_dev == other.st_dev;
}

} // namespace

std::unique_ptr<OpenArchive> ZipArchives::open(const std::string &path)
{
    return ZipReader::open(path);
}

bool ZipArchives::unpack(const QString &archive, const QString &folder)
{
    const auto real = QFileInfo(folder).canonicalFilePath();
    const auto reader = ZipReader::open(native(QFileInfo(archive).absoluteFilePath()));
    if (real.isEmpty() || !reader)
        return false;
    const auto target = native(real);
    // Beside the folder nobody who looks into it sees what is unfinished; only where it is a volume of its own, there.
    const auto parent = isSameVolume(target, target.parent_path()) ? target.parent_path() : target;
    StagingFolder::removeLeftOvers(parent);
    const auto staging = StagingFolder::make(parent);
    // A kill of the whole machine must not leave a tool that is there by its name alone.
    return staging && unpackZip(*reader, staging->tree()) && UnpackedTree::isHarmless(staging->tree())
        && Volume::writeOut(staging->tree()) && UnpackedTree::moveInto(staging->tree(), target);
}

bool ZipArchives::pack(const std::vector<Item> &items, const QString &archive)
{
    const QFileInfo info(archive);
    const auto parent = native(info.absolutePath());
    StagingFolder::removeLeftOvers(parent);
    const auto staging = StagingFolder::make(parent);
    if (!staging)
        return false;
    const auto fresh = staging->tree() / "archive";
    ZipWriter writer(fresh);
    for (const auto &item : items) {
        if (!writer.add(QFile::encodeName(item.name).toStdString(), native(item.path)))
            return false;
    }
    if (!writer.finish() || !Volume::writeOut(staging->tree()))
        return false;
    std::error_code problem;
    fs::rename(fresh, native(info.absoluteFilePath()), problem);
    return !problem;
}

} // namespace quillnest
