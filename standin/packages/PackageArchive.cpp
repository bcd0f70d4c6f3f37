#include "packages/PackageArchive.h"

#include <QCryptographicHash>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <stdexcept>

namespace standin
{

using namespace Qt::StringLiterals;

namespace
{

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QFile::ReadOnly))
        throw std::runtime_error(path.toStdString() + " can't be read");
    return file.readAll();
}

void addFile(ZipWriter &zip, const QByteArray &name, const QString &path)
{
    zip.addFile(name, contentOf(path), QFileInfo(path).isExecutable() ? 0755 : 0644);
}

void addFolder(ZipWriter &zip, const QByteArray &name, const QString &folder)
{
    zip.addFolder(name);
    QDirIterator entries(folder, QDir::Files, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QString path = entries.next();
        addFile(zip, name + '/' + path.mid(folder.size() + 1).toUtf8(), path);
    }
}

/// The same for every run, so that an archive keeps its sum.
QByteArray noise(qint64 size, quint64 seed)
{
    QByteArray result(size, Qt::Uninitialized);
    for (char &byte : result) {
        seed = seed * 6364136223846793005ULL + 1442695040888963407ULL;
        byte = static_cast<char>(seed >> 56);
    }
    return result;
}

PackageArchive finished(PackageArchive archive)
{
    archive.bytes = archive.zip.archive();
    return archive;
}

} // namespace

QByteArray checksumOf(const QByteArray &bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha1).toHex();
}

QList<PackageArchive> packSdk(const QString &sdk, const QList<int> &apis, qint64 imageBytes)
{
    QList<PackageArchive> result;
    PackageArchive tools{u"platform-tools"_s, u"platform-tools_r35.0.2-linux.zip"_s, "platform-tools", {}, {}};
    addFolder(tools.zip, tools.top, sdk + u"/platform-tools"_s);
    result.append(finished(tools));

    PackageArchive emulator{u"emulator"_s, u"emulator-linux_x64-12325540.zip"_s, "emulator", {}, {}};
    addFolder(emulator.zip, emulator.top, sdk + u"/emulator"_s);
    // Beside the program that the folder only links to lies the helper that it needs beside it.
    const QString program = QFileInfo(sdk + u"/emulator/emulator"_s).canonicalFilePath();
    const QString helper = u"standin-device-tool"_s;
    if (!QFileInfo::exists(sdk + u"/emulator/"_s + helper))
        addFile(emulator.zip, "emulator/" + helper.toUtf8(), QFileInfo(program).path() + u'/' + helper);
    result.append(finished(emulator));

    for (const int api : apis) {
        PackageArchive image{
            u"system-images;android-%1;default;x86_64"_s.arg(api),
            u"sys-img/android/x86_64-%1_r01.zip"_s.arg(api),
            "x86_64",
            {},
            {}};
        const QString folder = sdk + u"/system-images/android-%1/default/x86_64"_s.arg(api);
        image.zip.addFolder(image.top);
        const QString file = u"/system.img"_s;
        const QByteArray head = contentOf(folder + file);
        image.zip.addFile(
            image.top + file.toUtf8(),
            head + noise(qMax<qint64>(0, imageBytes - head.size()), static_cast<quint64>(api)));
        for (const auto *name : {"build.prop", "source.properties"})
            addFile(image.zip, image.top + '/' + name, folder + u'/' + QLatin1String(name));
        result.append(finished(image));
    }
    return result;
}

QByteArray withEscape(const PackageArchive &archive, Escape escape)
{
    ZipWriter zip = archive.zip;
    switch (escape) {
    case Escape::none:
        return archive.bytes;
    case Escape::dotDot:
        zip.addFile(archive.top + "/../../../escaped", "out");
        break;
    case Escape::absolute:
        zip.addFile("/tmp/escaped", "out");
        break;
    case Escape::link:
        zip.addLink(archive.top + "/way-out", "/tmp");
        zip.addFile(archive.top + "/way-out/escaped", "out");
        break;
    }
    return zip.archive();
}

} // namespace standin
