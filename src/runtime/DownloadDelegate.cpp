#include "runtime/DownloadDelegate.h"

#include "runtime/RuntimeProvisionError.h"

#include <QFile>

#include <cstdio>
#include <stdexcept>

namespace quillnest
{

DownloadDelegate::DownloadDelegate(const Platform &platform, QString destination, qint64 largest, Progress progress)
    : m_platform(platform), m_destination(std::move(destination)), m_largest(largest), m_progress(std::move(progress))
{
}

DownloadDelegate::~DownloadDelegate() = default;

Task<> DownloadDelegate::run(QUrl url)
{
    const auto end = m_end;
    // Dropped with this frame, success or not: no event comes after that.
    const auto download = m_platform.network->download(
        url, m_destination.section(u'/', 0, -2),
        {.onWrite = [this](qint64 written, qint64 expected) { wrote(written, expected); },
         .onFinished = [this](int status, const QString &file) { finished(status, file); },
         .onCompleted =
             [end](const std::optional<QString> &error) {
                 if (error)
                     end.fail(std::make_exception_ptr(RuntimeProvisionError::download(*error)));
             }});
    co_await end;
}

void DownloadDelegate::wrote(qint64 written, qint64 expected)
{
    // The object may go with whoever waits for the end.
    const auto end = m_end;
    if (m_largest > 0 && written > m_largest)
        end.fail(std::make_exception_ptr(
            RuntimeProvisionError::download(QStringLiteral("the file is larger than Google's list says"))));
    else
        m_progress(written, expected);
}

void DownloadDelegate::finished(int status, const QString &temporaryFile)
{
    // The object may go with whoever waits for the end.
    const auto end = m_end;
    if (status != 200) {
        end.fail(std::make_exception_ptr(RuntimeProvisionError::download(QStringLiteral("HTTP %1").arg(status))));
        return;
    }
    // In one step: a file of that name is replaced or stays.
    if (std::rename(QFile::encodeName(temporaryFile).constData(), QFile::encodeName(m_destination).constData()) != 0) {
        end.fail(std::make_exception_ptr(
            std::runtime_error((m_destination + QStringLiteral(": ") + qt_error_string()).toStdString())));
        return;
    }
    end.finish();
}

} // namespace quillnest
