#pragma once

#include <QByteArray>
#include <QString>

#include <exception>

namespace quillnest
{

/// Why the bridge components can't be used, with its sentence for the user.
class AndroidBridgeError : public std::exception
{
public:
    enum class Case { missing, corrupted, manifestUnreadable };

    static AndroidBridgeError missing(const QString &item);
    static AndroidBridgeError corrupted(const QString &item);
    static AndroidBridgeError manifestUnreadable(const QString &detail);

    Case errorCase() const { return m_case; }
    QString description() const { return m_description; }
    /// The description as UTF-8.
    const char *what() const noexcept override { return m_bytes.constData(); }

private:
    AndroidBridgeError(Case errorCase, QString description);

    Case m_case;
    QString m_description;
    QByteArray m_bytes;
};

} // namespace quillnest
