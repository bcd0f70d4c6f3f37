#pragma once

#include "platform/Pasteboard.h"

#include <QObject>

namespace quillnest
{

/// The clipboard that applications share; the X11 selection of the mouse is left alone.
class DesktopPasteboard : public QObject, public Pasteboard
{
    Q_OBJECT

public:
    DesktopPasteboard();

    int changeCount() const override { return m_changes; }
    std::optional<QString> string() const override;
    bool isSecret() const override;
    void setString(const QString &text) override;

private:
    int m_changes = 0;
};

} // namespace quillnest
