#include "packages/PackageLists.h"

#include <QXmlStreamWriter>

#include <array>

namespace standin
{

using namespace Qt::StringLiterals;

namespace
{

constexpr auto licenceId = "android-sdk-license"_L1;

class ListWriter
{
public:
    ListWriter() : m_xml(&m_bytes)
    {
        m_xml.setAutoFormatting(true);
        m_xml.setAutoFormattingIndent(-1);
        m_xml.writeStartDocument();
    }

    void begin(const QString &root, const QList<std::pair<QString, QString>> &namespaces)
    {
        // Plain names: the writer would put prefixes of its own into every element.
        m_xml.writeStartElement(root);
        for (const auto &[name, value] : namespaces)
            m_xml.writeAttribute(u"xmlns:"_s + name, value);
        licence(
            licenceId,
            u"Terms of the stand-in packages\n\n1. What this is\n\n1.1 These packages stand in for those of Android's "
            u"software development kit on machines without it.\n\n2. What you may do\n\n2.1 Whatever you like.\n\n"
            u"  2.2 Lines that begin with spaces keep them.\n\n3. What is promised\n\n3.1 Nothing & no one is "
            u"\"bound\" "
            u"<by this>.\n"_s);
        licence("android-sdk-preview-license"_L1, u"\n  Terms of what is not finished\n\nThe same, but earlier.\n"_s);
        const std::array channels = {u"stable"_s, u"beta"_s, u"dev"_s, u"canary"_s};
        for (int i = 0; i < 4; ++i) {
            m_xml.writeStartElement(u"channel"_s);
            m_xml.writeAttribute(u"id"_s, u"channel-%1"_s.arg(i));
            m_xml.writeCharacters(channels[static_cast<std::size_t>(i)]);
            m_xml.writeEndElement();
        }
    }

    QByteArray end()
    {
        m_xml.writeEndElement();
        m_xml.writeEndDocument();
        return m_bytes;
    }

    struct Version {
        int major = 1;
        int minor = 0;
        int micro = 0;
    };

    void beginPackage(const QString &path, const QString &name, const Version &version, int channel = 0)
    {
        m_xml.writeStartElement(u"remotePackage"_s);
        m_xml.writeAttribute(u"path"_s, path);
        m_xml.writeStartElement(u"type-details"_s);
        if (path.startsWith(u"system-images;")) {
            m_xml.writeAttribute(u"xsi:type"_s, u"sys-img:sysImgDetailsType"_s);
            const auto parts = path.split(u';');
            m_xml.writeTextElement(u"api-level"_s, parts[1].section(u'-', 1));
            m_xml.writeStartElement(u"tag"_s);
            m_xml.writeTextElement(u"id"_s, parts[2]);
            m_xml.writeTextElement(u"display"_s, u"Default Android System Image"_s);
            m_xml.writeEndElement();
            m_xml.writeTextElement(u"abi"_s, parts[3]);
        } else {
            m_xml.writeAttribute(u"xsi:type"_s, u"generic:genericDetailsType"_s);
        }
        m_xml.writeEndElement();
        m_xml.writeStartElement(u"revision"_s);
        m_xml.writeTextElement(u"major"_s, QString::number(version.major));
        m_xml.writeTextElement(u"minor"_s, QString::number(version.minor));
        m_xml.writeTextElement(u"micro"_s, QString::number(version.micro));
        m_xml.writeEndElement();
        m_xml.writeTextElement(u"display-name"_s, name);
        reference(u"uses-license"_s, licenceId);
        reference(u"channelRef"_s, u"channel-%1"_s.arg(channel));
        m_xml.writeStartElement(u"archives"_s);
    }

    void endPackage()
    {
        m_xml.writeEndElement();
        m_xml.writeEndElement();
    }

    void archive(
        const QString &address, qint64 size, const QByteArray &sha1, const QString &os = {}, const QString &arch = {})
    {
        m_xml.writeStartElement(u"archive"_s);
        m_xml.writeStartElement(u"complete"_s);
        m_xml.writeTextElement(u"size"_s, QString::number(size));
        m_xml.writeStartElement(u"checksum"_s);
        m_xml.writeAttribute(u"type"_s, u"sha1"_s);
        m_xml.writeCharacters(QString::fromLatin1(sha1));
        m_xml.writeEndElement();
        m_xml.writeTextElement(u"url"_s, address);
        m_xml.writeEndElement();
        if (!os.isEmpty())
            m_xml.writeTextElement(u"host-os"_s, os);
        if (!arch.isEmpty())
            m_xml.writeTextElement(u"host-arch"_s, arch);
        m_xml.writeEndElement();
    }

    /// One that can't be had here.
    void foreign(const QString &address, const QString &os, const QString &arch = {})
    {
        archive(address, 7'000'000, checksumOf(address.toUtf8()), os, arch);
    }

private:
    void licence(QLatin1String id, const QString &text)
    {
        m_xml.writeStartElement(u"license"_s);
        m_xml.writeAttribute(u"id"_s, id);
        m_xml.writeAttribute(u"type"_s, u"text"_s);
        m_xml.writeCharacters(text);
        m_xml.writeEndElement();
    }

    void reference(const QString &element, const QString &id)
    {
        m_xml.writeEmptyElement(element);
        m_xml.writeAttribute(u"ref"_s, id);
    }

    QByteArray m_bytes;
    QXmlStreamWriter m_xml;
};

const std::pair<QString, QString> common{u"common"_s, u"http://schemas.android.com/repository/android/common/02"_s};
const std::pair<QString, QString> instance{u"xsi"_s, u"http://www.w3.org/2001/XMLSchema-instance"_s};

} // namespace

QByteArray toolsList(const QList<ListedArchive> &archives)
{
    ListWriter list;
    list.begin(
        u"sdk:sdk-repository"_s,
        {{u"sdk"_s, u"http://schemas.android.com/sdk/android/repo/repository2/03"_s},
         common,
         {u"generic"_s, u"http://schemas.android.com/repository/android/generic/02"_s},
         instance});
    list.beginPackage(u"build-tools;35.0.0"_s, u"Android SDK Build-Tools 35"_s, {35});
    for (const auto *os : {"linux", "macosx", "windows"})
        list.foreign(u"build-tools_r35_%1.zip"_s.arg(QLatin1String(os)), QLatin1String(os));
    list.endPackage();
    for (const auto &archive : archives) {
        if (archive.package == u"platform-tools") {
            list.beginPackage(archive.package, u"Android SDK Platform-Tools"_s, {35, 0, 2});
            list.foreign(u"platform-tools_r35.0.2-darwin.zip"_s, u"macosx"_s);
            list.archive(archive.address, archive.size, archive.sha1, u"linux"_s);
            list.foreign(u"platform-tools_r35.0.2-windows.zip"_s, u"windows"_s);
            list.endPackage();
        } else if (archive.package == u"emulator") {
            // An older one, the one, and a newer one that is not for everybody yet.
            list.beginPackage(archive.package, u"Android Emulator"_s, {34, 2, 16});
            list.foreign(u"emulator-linux_x64-12038310.zip"_s, u"linux"_s, u"x64"_s);
            list.endPackage();
            list.beginPackage(archive.package, u"Android Emulator"_s, {35, 1, 20});
            list.foreign(u"emulator-darwin_aarch64-12325540.zip"_s, u"macosx"_s, u"aarch64"_s);
            list.foreign(u"emulator-darwin_x64-12325540.zip"_s, u"macosx"_s, u"x64"_s);
            list.archive(archive.address, archive.size, archive.sha1, u"linux"_s, u"x64"_s);
            list.foreign(u"emulator-windows_x64-12325540.zip"_s, u"windows"_s, u"x64"_s);
            list.endPackage();
            list.beginPackage(archive.package, u"Android Emulator"_s, {35, 3, 1}, 3);
            list.foreign(u"emulator-linux_x64-12454444.zip"_s, u"linux"_s, u"x64"_s);
            list.endPackage();
        }
    }
    return list.end();
}

QByteArray imagesList(const QList<ListedArchive> &archives)
{
    ListWriter list;
    list.begin(
        u"sys-img:sdk-sys-img"_s,
        {{u"sys-img"_s, u"http://schemas.android.com/sdk/android/repo/sys-img2/03"_s}, common, instance});
    for (const auto &archive : archives) {
        if (!archive.package.startsWith(u"system-images;"))
            continue;
        const QString base = archive.package.section(u';', 0, 2);
        const QString file = archive.address.section(u'/', -1);
        list.beginPackage(base + u";arm64-v8a"_s, u"ARM 64 v8a System Image"_s, {1});
        list.foreign(QString(file).replace(u"x86_64"_s, u"arm64-v8a"_s), {});
        list.endPackage();
        list.beginPackage(archive.package, u"Intel x86_64 Atom System Image"_s, {1});
        list.archive(file, archive.size, archive.sha1);
        list.endPackage();
    }
    return list.end();
}

} // namespace standin
