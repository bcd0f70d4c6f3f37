#pragma once

#include <QByteArray>
#include <QString>

namespace quillnest
{

/// A made-up app's icon as a PNG file: a few shapes on a ground, the same for the same name at every call.
QByteArray galleryIcon(const QString &name);

} // namespace quillnest
