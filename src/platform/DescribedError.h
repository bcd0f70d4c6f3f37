#pragma once

#include <QByteArray>
#include <QString>

#include <exception>
#include <utility>

namespace quillnest
{

/// A failure with its sentence for the user.
class DescribedError : public std::exception
{
public:
    explicit DescribedError(QString description)
        : m_description(std::move(description)), m_bytes(m_description.toUtf8())
    {
    }

    const QString &description() const { return m_description; }
    /// The description as UTF-8.
    const char *what() const noexcept override { return m_bytes.constData(); }

private:
    QString m_description;
    QByteArray m_bytes;
};

/// What any failure says of itself, for the user or the log.
inline QString descriptionOf(const std::exception &error)
{
    return QString::fromUtf8(error.what());
}

} // namespace quillnest
