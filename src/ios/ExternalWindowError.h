#pragma once

#include "platform/DescribedError.h"

namespace quillnest
{

/// Why another program's window could not be arranged, with the sentence for the user.
class ExternalWindowError : public DescribedError
{
public:
    enum class Kind { permissionRequired, appNotRunning, windowNotFound, operationFailed };

    /// `systemName` as the host's profile has it.
    ExternalWindowError(Kind kind, const QString &systemName);

    Kind kind() const { return m_kind; }

private:
    Kind m_kind;
};

} // namespace quillnest
