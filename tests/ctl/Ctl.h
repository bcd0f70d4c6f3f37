#pragma once

#include <QByteArray>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace quillnest
{

struct CtlResult {
    int status = -1;
    QByteArray output;
    QByteArray errors;
};

/// The companion's program in a home folder of its own, with no session bus unless a test names one.
class Ctl : public ::testing::Test
{
protected:
    Ctl();

    CtlResult run(const QStringList &arguments) const;
    /// Any program in the same environment.
    CtlResult runProgram(const QString &program, const QStringList &arguments) const;
    /// Starts the companion, which ends with the object at the latest.
    std::unique_ptr<QProcess> start(const QStringList &arguments) const;

    /// Handles this process's events until the condition holds; false after a while.
    static bool comesTrue(const std::function<bool()> &condition);

    QString path(const QString &relative) const { return m_root.filePath(relative); }
    QString settingsFile() const { return path(QStringLiteral("config/Quillnest/settings.json")); }
    QString logFile() const { return path(QStringLiteral("state/Quillnest/Logs/quillnest.log")); }
    QByteArray content(const QString &file) const;
    void write(const QString &file, const QByteArray &text, QIODevice::OpenMode mode = QIODevice::WriteOnly) const;

    QProcessEnvironment environment;

private:
    QTemporaryDir m_root;
};

} // namespace quillnest
