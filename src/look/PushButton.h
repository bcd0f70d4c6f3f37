#pragma once

#include "look/Control.h"

namespace quillnest
{

/// A button with a title.
class PushButton : public Control
{
    Q_OBJECT

public:
    enum class Kind {
        plain,
        /// The one of a group that is meant to be pressed, filled with the accent colour.
        prominent,
        /// What it does can't be taken back.
        destructive,
    };

    PushButton(const Look &look, const QString &title, Kind kind = Kind::plain, QWidget *parent = nullptr);

    QSize sizeHint() const override;

protected:
    void paint(QPainter &painter) override;
    Ring ring() const override;

private:
    const Kind m_kind;
};

} // namespace quillnest
