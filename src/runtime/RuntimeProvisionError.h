#pragma once

#include "platform/DescribedError.h"

namespace quillnest
{

struct HostProfile;

/// A failure on the way to a runtime, with its sentence for the user.
class RuntimeProvisionError : public DescribedError
{
public:
    enum class Case { manifest, missingPackage, checksum, extract, download };

    static RuntimeProvisionError manifest(const QString &detail);
    static RuntimeProvisionError missingPackage(const QString &packagePath, const HostProfile &profile);
    static RuntimeProvisionError checksum(const QString &component);
    static RuntimeProvisionError extract(const QString &component);
    static RuntimeProvisionError download(const QString &detail);

    Case errorCase() const { return m_case; }

private:
    RuntimeProvisionError(Case errorCase, QString description);

    Case m_case;
};

} // namespace quillnest
