#pragma once

#include "package/APKIconExtractor.h"
#include "platform/Platform.h"

#include <QString>
#include <QUuid>

#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace quillnest
{

/// The icons that were found, each kept as the PNG file "{id}.png" for the runs to come. Any thread. Held by shared
/// pointers only.
class IconFiles : public std::enable_shared_from_this<IconFiles>
{
public:
    using Bytes = std::vector<std::uint8_t>;
    using Icon = APKIconExtractor::Icon;

    explicit IconFiles(const Platform &platform);

    /// The app's file; absent if none was kept. Blocks.
    std::optional<Bytes> read(QUuid id) const;

    /// Keeps the icon and gives the file. One that can't be written is given all the same; absent if the picture can't
    /// be packed. Blocks.
    std::optional<Bytes> keep(QUuid id, const Icon &icon) const;

    /// Keeps the icon with low priority: one after the other, and between two of them whatever else has begun to wait
    /// takes its turn. What hasn't been kept at the end of the program is read out of its package again in the next
    /// run.
    void keepLater(QUuid id, std::shared_ptr<const Icon> icon);

private:
    struct Waiting {
        QUuid id;
        std::shared_ptr<const Icon> icon;
    };
    void keepNext();
    void goOnLater();
    QString path(QUuid id) const;

    Executor &m_executor;
    const std::shared_ptr<Drawing> m_drawing;
    const QString m_folder;
    std::mutex m_lock;
    /// The first is the one that is being kept.
    std::deque<Waiting> m_waiting;
};

} // namespace quillnest
