#pragma once

#include "platform/LoginItems.h"

namespace quillnest
{

/// An autostart entry as desktops understand it (freedesktop.org, Desktop Application Autostart Specification 0.5).
class XdgLoginItems : public LoginItems
{
public:
    /// `configFolder` is the user's; `program` is the absolute path of what the desktop is to start.
    XdgLoginItems(const QString &configFolder, QString program);

    Status status() const override;
    std::optional<QString> set(bool enabled) override;

private:
    QByteArray entry() const;

    const QString m_path;
    const QString m_program;
};

} // namespace quillnest
