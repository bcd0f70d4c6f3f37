#include "runtime/DownloadDelegate.h"

#include "runtime/RuntimeProvisionError.h"

#include <QFile>

#include <coroutine>
#include <cstdio>
#include <stdexcept>

namespace quillnest
{

/// Holds whoever waits for the end until the first of the download's events that brings it. Later ones find nobody.
class DownloadDelegate::Waiter
{
public:
    /// What a coroutine awaits. Refers to the waiter, because the coroutines' library copies it.
    class End
    {
    public:
        explicit End(Waiter &waiter) : m_waiter(waiter) { }
        bool await_ready() const noexcept { return m_waiter.m_ended; }
        void await_suspend(std::coroutine_handle<> coroutine) { m_waiter.m_waiting = coroutine; }
        void await_resume() const
        {
            if (m_waiter.m_error)
                std::rethrow_exception(m_waiter.m_error);
        }

    private:
        Waiter &m_waiter;
    };

    void resume(std::exception_ptr error = nullptr)
    {
        if (m_ended)
            return;
        m_ended = true;
        m_error = std::move(error);
        if (m_waiting)
            std::exchange(m_waiting, nullptr).resume();
    }

private:
    bool m_ended = false;
    std::exception_ptr m_error;
    std::coroutine_handle<> m_waiting;
};

DownloadDelegate::DownloadDelegate(const Platform &platform, QString destination, Progress progress)
    : m_platform(platform)
    , m_destination(std::move(destination))
    , m_progress(std::move(progress))
    , m_waiter(std::make_shared<Waiter>())
{
}

DownloadDelegate::~DownloadDelegate() = default;

Task<> DownloadDelegate::run(QUrl url)
{
    const auto waiter = m_waiter;
    // Dropped with this frame, success or not: no event comes after that.
    const auto download = m_platform.network->download(
        url, m_destination.section(u'/', 0, -2),
        {.onWrite = m_progress,
         .onFinished = [this](int status, const QString &file) { finished(status, file); },
         .onCompleted =
             [this, waiter](const std::optional<QString> &error) {
                 if (!error)
                     return;
                 waiter->resume(std::make_exception_ptr(RuntimeProvisionError::download(*error)));
             }});
    co_await Waiter::End(*waiter);
}

void DownloadDelegate::finished(int status, const QString &temporaryFile)
{
    const auto waiter = m_waiter;
    if (status != 200) {
        waiter->resume(std::make_exception_ptr(RuntimeProvisionError::download(QStringLiteral("HTTP %1").arg(status))));
        return;
    }
    // In one step: a file of that name is replaced or stays.
    if (std::rename(QFile::encodeName(temporaryFile).constData(), QFile::encodeName(m_destination).constData()) != 0) {
        waiter->resume(std::make_exception_ptr(
            std::runtime_error((m_destination + QStringLiteral(": ") + qt_error_string()).toStdString())));
        return;
    }
    waiter->resume();
}

} // namespace quillnest
