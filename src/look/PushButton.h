#pragma once

#include "platform/Platform.h"

#include <QAbstractButton>

namespace quillnest
{

/// A button with a title. The prominent one of a group is filled with the accent colour.
class PushButton : public QAbstractButton
{
    Q_OBJECT

public:
    enum class Kind { plain, prominent };

    PushButton(const Platform &platform, const QString &title, Kind kind = Kind::plain, QWidget *parent = nullptr);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    const Platform &m_platform;
    /// Not the toolkit's own text, in which an ampersand would mark a key.
    const QString m_title;
    const Kind m_kind;
    bool m_hovered = false;
};

} // namespace quillnest
