#pragma once

#include "platform/Network.h"

#include <QList>

#include <map>

namespace quillnest
{

/// A network that is a table of answers, and downloads in a test's hands.
class FakeNetwork : public Network
{
public:
    /// A download that the program holds.
    struct Running {
        QUrl url;
        QString folder;
        DownloadEvents events;
        bool dropped = false;
    };

    /// What `fetch` answers; anything else fails in these words.
    QString failure = QStringLiteral("no answer");
    std::map<QUrl, HttpAnswer> answers;
    QList<QUrl> fetched;
    /// The downloads so far, in order.
    std::vector<std::shared_ptr<Running>> downloads;

    Task<HttpAnswer> fetch(QUrl url) override
    {
        fetched.append(url);
        const auto answer = answers.find(url);
        if (answer == answers.end())
            throw NetworkError(failure);
        // The library moves out of a value that is returned by name, unless it is constant.
        co_return std::as_const(answer->second);
    }

    std::unique_ptr<Download> download(const QUrl &url, const QString &folder, DownloadEvents events) override
    {
        downloads.push_back(std::make_shared<Running>(Running{url, folder, std::move(events)}));
        return std::make_unique<Handle>(downloads.back());
    }

private:
    class Handle : public Download
    {
    public:
        explicit Handle(std::shared_ptr<Running> running) : m_running(std::move(running)) { }
        ~Handle() override
        {
            m_running->dropped = true;
            m_running->events = {};
        }

    private:
        const std::shared_ptr<Running> m_running;
    };
};

} // namespace quillnest
