#pragma once

#include <QByteArray>
#include <QString>

#include <exception>

namespace quillnest
{

struct HostProfile;

/// A failure on the way to a runtime, with its sentence for the user.
class RuntimeProvisionError : public std::exception
{
public:
    enum class Case { manifest, missingPackage, checksum, extract, download };

    static RuntimeProvisionError manifest(const QString &detail);
    static RuntimeProvisionError missingPackage(const QString &packagePath, const HostProfile &profile);
    static RuntimeProvisionError checksum(const QString &component);
    static RuntimeProvisionError extract(const QString &component);
    static RuntimeProvisionError download(const QString &detail);

    Case errorCase() const { return m_case; }
    QString description() const { return m_description; }
    /// The description as UTF-8.
    const char *what() const noexcept override { return m_bytes.constData(); }

private:
    RuntimeProvisionError(Case errorCase, QString description);

    Case m_case;
    QString m_description;
    QByteArray m_bytes;
};

} // namespace quillnest
