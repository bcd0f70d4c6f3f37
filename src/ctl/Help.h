#pragma once

#include <QByteArray>
#include <QString>

namespace quillnest::ctl
{

/// What --help prints: of a command, or of the whole for any other name.
QByteArray helpText(const QString &command = {});

/// The known commands of the text channel, each on a line with its meaning.
QByteArray commandList();

} // namespace quillnest::ctl
