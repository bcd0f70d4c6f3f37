#pragma once

#include "look/Look.h"

#include <QObject>

namespace quillnest
{

/// A look that follows the desktop's appearance, for windows that have no other of their own.
class LiveLook : public QObject, public Look
{
    Q_OBJECT

public:
    /// `platform` outlives the look.
    explicit LiveLook(const Platform &platform);

Q_SIGNALS:
    /// It is another one now.
    void changed();
};

} // namespace quillnest
