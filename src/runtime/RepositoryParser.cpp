#include "runtime/RepositoryParser.h"

#include "runtime/RuntimeProvisionError.h"

#include <QXmlStreamReader>

namespace quillnest
{

namespace
{

/// Follows the elements one by one. There is no notion of nesting beyond what the fields hold, so that an element means
/// the same wherever newer lists move it to.
class Parser
{
public:
    RepositoryList run(const QByteArray &xml)
    {
        QXmlStreamReader reader(xml);
        // Prefixes are cut off and not looked up: one that nobody declared is no reason to refuse a list.
        reader.setNamespaceProcessing(false);
        while (!reader.atEnd()) {
            switch (reader.readNext()) {
            case QXmlStreamReader::StartElement:
                start(localName(reader), reader.attributes());
                break;
            case QXmlStreamReader::Characters:
                m_text += reader.text();
                break;
            case QXmlStreamReader::EndElement:
                end(localName(reader));
                break;
            default:
                break;
            }
        }
        if (reader.hasError()) {
            const auto words = reader.errorString();
            throw RuntimeProvisionError::manifest(words.isEmpty() ? QStringLiteral("parse error") : words);
        }
        return std::move(m_list);
    }

private:
    static QStringView localName(const QXmlStreamReader &reader)
    {
        const auto qualified = reader.qualifiedName();
        return qualified.mid(qualified.lastIndexOf(QLatin1Char(':')) + 1);
    }

    void start(QStringView name, const QXmlStreamAttributes &attributes)
    {
        m_text.clear();
        if (name == u"license") {
            m_licenseID = attributes.hasAttribute(QLatin1String("id"))
                ? std::optional(attributes.value(QLatin1String("id")).toString())
                : std::nullopt;
        } else if (name == u"remotePackage") {
            m_current.emplace().path = attributes.value(QLatin1String("path")).toString();
        } else if (name == u"uses-license" && m_current) {
            m_current->licenseRef = attributes.value(QLatin1String("ref")).toString();
        } else if (name == u"channelRef" && m_current) {
            m_current->channel = attributes.value(QLatin1String("ref")).toString();
        } else if (name == u"revision" && m_current && !m_archive) {
            m_inRevision = true;
            m_revisionParts.clear();
        } else if (name == u"archive") {
            m_archive.emplace();
        }
    }

    void end(QStringView name)
    {
        const auto value = m_text.trimmed();
        if (name == u"license" && m_licenseID) {
            m_list.licenses[*m_licenseID] = m_text;
            m_licenseID.reset();
        } else if (name == u"revision" && m_inRevision) {
            if (m_current) {
                m_current->revision
                    = {m_revisionParts.value(QStringLiteral("major")), m_revisionParts.value(QStringLiteral("minor")),
                       m_revisionParts.value(QStringLiteral("micro"))};
            }
            m_inRevision = false;
        } else if (m_inRevision && (name == u"major" || name == u"minor" || name == u"micro")) {
            m_revisionParts[name.toString()] = value.toLongLong();
        } else if (name == u"display-name" && m_current && !m_archive) {
            m_current->displayName = value;
        } else if (name == u"archive") {
            if (m_current && m_archive)
                m_current->archives.push_back(*m_archive);
            m_archive.reset();
        } else if (name == u"remotePackage" && m_current) {
            m_list.packages.push_back(std::move(*m_current));
            m_current.reset();
        } else if (m_archive) {
            endOfArchiveField(name, value);
        }
        m_text.clear();
    }

    void endOfArchiveField(QStringView name, const QString &value)
    {
        if (name == u"url")
            m_archive->url = value;
        else if (name == u"size")
            m_archive->size = value.toLongLong();
        else if (name == u"checksum")
            m_archive->sha1 = value;
        else if (name == u"host-os")
            m_archive->os = value;
        else if (name == u"host-arch")
            m_archive->arch = value;
    }

    RepositoryList m_list;
    std::optional<RepositoryList::Package> m_current;
    std::optional<QString> m_licenseID;
    QString m_text;
    std::optional<RepositoryList::Archive> m_archive;
    bool m_inRevision = false;
    QMap<QString, qint64> m_revisionParts;
};

} // namespace

RepositoryList parseRepository(const QByteArray &xml)
{
    return Parser().run(xml);
}

} // namespace quillnest
