#pragma once

#include "look/Control.h"

#include <QMenu>
#include <QPointer>
#include <QVariant>

#include <vector>

namespace quillnest
{

/// A button that shows one of several values and offers them all in a menu. An arrow key opens the menu and changes
/// nothing by itself, because some choices set off long work.
class PopUpPicker : public Control
{
    Q_OBJECT

public:
    struct Entry {
        QString title;
        QVariant value;
        bool isEnabled = true;
    };

    /// `name` is what screen readers call it.
    PopUpPicker(const Look &look, const QString &name, QWidget *parent = nullptr);

    void setEntries(std::vector<Entry> entries);
    const std::vector<Entry> &entries() const { return m_entries; }

    /// Shows a value; empty if no entry has it. Says nothing to those who listen.
    void setCurrent(const QVariant &value);
    const QVariant &current() const { return m_current; }
    /// The title of the value.
    QString currentTitle() const;

    /// The menu while it is open.
    QMenu *menu() const { return m_menu; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// The user has chosen another value, which is shown already.
    void picked(const QVariant &value);

protected:
    void paint(QPainter &painter) override;
    void keyPressEvent(QKeyEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    void openMenu();
    void choose(const QVariant &value);

    std::vector<Entry> m_entries;
    QVariant m_current;
    QPointer<QMenu> m_menu;
};

} // namespace quillnest
