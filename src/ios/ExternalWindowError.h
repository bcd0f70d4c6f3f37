#pragma once

#include <QString>

#include <exception>

namespace quillnest
{

/// Why another program's window could not be arranged, with the sentence for the user.
class ExternalWindowError : public std::exception
{
public:
    enum class Kind { permissionRequired, appNotRunning, windowNotFound, operationFailed };

    /// `systemName` as the host's profile has it.
    ExternalWindowError(Kind kind, const QString &systemName);

    Kind kind() const { return m_kind; }
    QString description() const { return QString::fromUtf8(m_description); }
    const char *what() const noexcept override { return m_description.constData(); }

private:
    Kind m_kind;
    QByteArray m_description;
};

} // namespace quillnest
