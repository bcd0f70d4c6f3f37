#include "runtime/RuntimeProvisionError.h"

#include "platform/HostProfile.h"

namespace quillnest
{

RuntimeProvisionError::RuntimeProvisionError(Case errorCase, QString description)
    : DescribedError(std::move(description)), m_case(errorCase)
{
}

RuntimeProvisionError RuntimeProvisionError::manifest(const QString &detail)
{
    return {Case::manifest, QStringLiteral("Could not read Google's Android package list: %1").arg(detail)};
}

RuntimeProvisionError RuntimeProvisionError::missingPackage(const QString &packagePath, const HostProfile &profile)
{
    return {
        Case::missingPackage,
        QStringLiteral("Google's package list has no download for %1 on %2").arg(packagePath, profile.processorName)};
}

RuntimeProvisionError RuntimeProvisionError::checksum(const QString &component)
{
    return {Case::checksum, QStringLiteral("Downloaded %1 failed its checksum. Please try again.").arg(component)};
}

RuntimeProvisionError RuntimeProvisionError::extract(const QString &component)
{
    return {Case::extract, QStringLiteral("Could not unpack %1").arg(component)};
}

RuntimeProvisionError RuntimeProvisionError::download(const QString &detail)
{
    return {Case::download, QStringLiteral("Download failed: %1").arg(detail)};
}

} // namespace quillnest
