#pragma once

#include "platform/DescribedError.h"

namespace quillnest
{

/// Why the bridge components can't be used, with its sentence for the user.
class AndroidBridgeError : public DescribedError
{
public:
    enum class Case { missing, corrupted, manifestUnreadable };

    static AndroidBridgeError missing(const QString &item);
    static AndroidBridgeError corrupted(const QString &item);
    static AndroidBridgeError manifestUnreadable(const QString &detail);

    Case errorCase() const { return m_case; }

private:
    AndroidBridgeError(Case errorCase, QString description);

    Case m_case;
};

} // namespace quillnest
