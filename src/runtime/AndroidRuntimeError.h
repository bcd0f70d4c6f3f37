#pragma once

#include <QByteArray>
#include <QString>

#include <exception>

namespace quillnest
{

/// A failure of device work that the user waits for, with its sentence for the user.
class AndroidRuntimeError : public std::exception
{
public:
    enum class Case { toolMissing, commandFailed, bootTimeout, packageNameMissing };

    static AndroidRuntimeError toolMissing(const QString &tool);
    /// `text` is the tool's own words, of which the middle is left out if they are very many; empty text gets a
    /// general sentence.
    static AndroidRuntimeError commandFailed(const QString &text);
    static AndroidRuntimeError bootTimeout();
    static AndroidRuntimeError packageNameMissing();

    Case errorCase() const { return m_case; }
    QString description() const { return m_description; }
    /// The description as UTF-8.
    const char *what() const noexcept override { return m_bytes.constData(); }

private:
    AndroidRuntimeError(Case errorCase, QString description);

    Case m_case;
    QString m_description;
    QByteArray m_bytes;
};

/// What the waiting coroutines get when the object that they wait on has gone. Not for the user.
class AndroidRuntimeCancelled : public std::exception
{
public:
    const char *what() const noexcept override { return "android runtime cancelled"; }
};

} // namespace quillnest
