#pragma once

#include <QSize>
#include <QString>
#include <QStringList>

namespace standin
{

/// The stream server's command line behind its class name: the version, then "key=value" words.
struct StreamOptions {
    static constexpr auto version = "5.0.1"; ///< client and server must be of the same build

    quint32 scid = 0;
    bool audio = true;
    int videoBitRate = 8000000;
    int maxFps = 60;
    QSize displaySize;
    int dpi = 160;
    bool flexDisplay = false;
    bool clipboardAutosync = true;

    /// False with `problem` filled in, in the server's words.
    bool parse(const QStringList &words, QString *problem);
    QByteArray socketName() const;
};

} // namespace standin
