#include "launcher/settings/SettingsPane.h"

#include "launcher/settings/PanelSettingsPage.h"
#include "look/Fonts.h"
#include "look/HeaderIconButton.h"
#include "look/SlimScrollBar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QScrollArea>

namespace quillnest
{

SettingsPane::SettingsPane(const PanelServices &services, const PanelLook &look, QWidget *parent)
    : QWidget(parent), m_look(look)
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    auto *bar = new QWidget(this);
    bar->setFixedHeight(44);
    auto *row = new QHBoxLayout(bar);
    row->setContentsMargins(10, 8, 16, 4);
    row->setSpacing(8);
    auto *back = new HeaderIconButton(look, QStringLiteral("chevron.left"), QStringLiteral("Back to apps"), bar);
    connect(back, &QAbstractButton::clicked, this, &SettingsPane::left);
    row->addWidget(back);
    m_title = new QLabel(QStringLiteral("Settings"), bar);
    m_title->setFont(interfaceFont(13, QFont::DemiBold));
    row->addWidget(m_title, 1);
    column->addWidget(bar);

    auto *scroll = new QScrollArea(this);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    scroll->setFocusPolicy(Qt::NoFocus);
    scroll->viewport()->setAutoFillBackground(false);
    m_page = new PanelSettingsPage(services, look, scroll);
    scroll->setWidget(m_page);
    m_page->setAutoFillBackground(false);
    new SlimScrollBar(*scroll, look);
    column->addWidget(scroll, 1);
    refresh();
}

void SettingsPane::refresh()
{
    auto palette = m_title->palette();
    palette.setColor(QPalette::WindowText, m_look.colors.label);
    m_title->setPalette(palette);
    m_page->refresh();
}

} // namespace quillnest
