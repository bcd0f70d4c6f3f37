#include "launcher/setup/LicenceSheet.h"

#include "look/Fonts.h"
#include "look/Palette.h"
#include "look/PushButton.h"
#include "look/SlimScrollBar.h"

#include <QApplication>
#include <QFrame>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPointer>
#include <QTextBrowser>
#include <QVBoxLayout>

namespace quillnest
{

namespace
{

constexpr int margin = 12;
constexpr int textHeight = 380;

void setColor(QWidget *widget, const QColor &color)
{
    auto palette = widget->palette();
    palette.setColor(QPalette::WindowText, color);
    widget->setPalette(palette);
}

QTextBrowser *licenceArea(const std::vector<RuntimeLicense> &licenses, QWidget *parent)
{
    auto *area = new QTextBrowser(parent);
    area->setAccessibleName(QStringLiteral("Licence text"));
    area->setFrameShape(QFrame::NoFrame);
    area->setOpenLinks(false);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setFont(interfaceFont(11));
    area->document()->setDocumentMargin(10);
    // Plain text: what a server sent is not to be read as markup.
    QTextCursor cursor(area->document());
    QTextCharFormat heading;
    heading.setFont(interfaceFont(12, QFont::DemiBold));
    QTextCharFormat body;
    body.setFont(interfaceFont(11));
    for (const auto &license : licenses) {
        cursor.insertText(license.id + QStringLiteral("\n\n"), heading);
        cursor.insertText(license.text + QStringLiteral("\n\n"), body);
    }
    area->moveCursor(QTextCursor::Start);
    return area;
}

} // namespace

LicenceSheet::LicenceSheet(const Platform &platform, const std::vector<RuntimeLicense> &licenses, QWidget *panel)
    : QWidget(panel), m_look(platform), m_card(new QWidget(this)), m_previousFocus(QApplication::focusWidget())
{
    setAttribute(Qt::WA_DeleteOnClose);
    setAccessibleName(QStringLiteral("Google Android SDK licence"));
    auto *content = new QVBoxLayout(m_card);
    content->setContentsMargins(16, 16, 16, 14);
    content->setSpacing(8);
    m_title = new QLabel(QStringLiteral("Google Android SDK licence"), m_card);
    m_title->setFont(interfaceFont(15, QFont::Bold));
    content->addWidget(m_title);
    m_note = new QLabel(
        QStringLiteral("You are accepting this licence with Google. Quillnest only downloads the packages for you."),
        m_card);
    m_note->setWordWrap(true);
    m_note->setFont(interfaceFont(11));
    content->addWidget(m_note);

    m_ground = new QFrame(m_card);
    m_ground->setObjectName(QStringLiteral("licences"));
    m_ground->setMaximumHeight(textHeight);
    auto *inside = new QVBoxLayout(m_ground);
    inside->setContentsMargins(2, 2, 2, 2);
    m_text = licenceArea(licenses, m_ground);
    inside->addWidget(m_text);
    new SlimScrollBar(*m_text, m_look);
    content->addWidget(m_ground, 1);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    auto *decline = new PushButton(m_look, QStringLiteral("Decline"), PushButton::Kind::plain, m_card);
    auto *accept = new PushButton(m_look, QStringLiteral("Accept & Download"), PushButton::Kind::prominent, m_card);
    connect(decline, &QAbstractButton::clicked, this, &LicenceSheet::end);
    connect(accept, &QAbstractButton::clicked, this, [this] {
        const QPointer<LicenceSheet> guard(this);
        Q_EMIT accepted();
        if (guard)
            end();
    });
    buttons->addWidget(decline);
    buttons->addWidget(accept);
    content->addSpacing(4);
    content->addLayout(buttons);

    auto *whole = new QVBoxLayout(this);
    whole->setContentsMargins(margin, margin, margin, margin);
    whole->addStretch(1);
    whole->addWidget(m_card, 1000);
    whole->addStretch(1);
    m_card->setMaximumHeight(textHeight + 150);

    connect(&m_look, &LiveLook::changed, this, &LicenceSheet::takeColors);
    takeColors();
    panel->installEventFilter(this);
    setGeometry(panel->rect());
    show();
    raise();
    // Read first, decide then: the text has the keyboard, so that it can be scrolled at once.
    m_text->setFocus();
}

void LicenceSheet::end()
{
    // What had it may have gone from the screen, and whoever took the consent may have found it another place.
    if (m_previousFocus && m_previousFocus->isVisible() && isAncestorOf(QApplication::focusWidget()))
        m_previousFocus->setFocus();
    close();
}

void LicenceSheet::takeColors()
{
    const auto &colors = m_look.colors;
    setColor(m_title, colors.label);
    setColor(m_note, colors.secondaryLabel);
    m_ground->setStyleSheet(QStringLiteral("#licences { background: %1; border-radius: 8px; }"
                                           "QTextBrowser { background: transparent; color: %2; }")
                                .arg(colors.field.name(QColor::HexArgb), colors.label.name(QColor::HexArgb)));
    update();
}

bool LicenceSheet::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize)
        setGeometry(parentWidget()->rect());
    return QWidget::eventFilter(watched, event);
}

void LicenceSheet::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        end();
    // Nothing goes on to what lies below.
    event->accept();
}

void LicenceSheet::mousePressEvent(QMouseEvent *event)
{
    event->accept();
}

bool LicenceSheet::focusNextPrevChild(bool next)
{
    // Only among the sheet's own.
    QList<QWidget *> stops;
    for (auto *child : findChildren<QWidget *>()) {
        if (child->isVisible() && child->isEnabled() && (child->focusPolicy() & Qt::TabFocus))
            stops.append(child);
    }
    if (stops.isEmpty())
        return false;
    const auto now = stops.indexOf(QApplication::focusWidget());
    const auto count = stops.size();
    stops[(now + (next ? 1 : count - 1)) % count]->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

void LicenceSheet::paintEvent(QPaintEvent *)
{
    const auto &colors = m_look.colors;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 110));
    // As round as the panel below.
    const int radius = window()->testAttribute(Qt::WA_TranslucentBackground) ? windowCornerRadius : 0;
    painter.drawRoundedRect(rect(), radius, radius);
    const auto card = QRectF(m_card->geometry());
    for (int i = 6; i > 0; --i) {
        painter.setBrush(QColor(0, 0, 0, 9));
        painter.drawRoundedRect(card.adjusted(-i, -i + 2, i, i + 2), 12 + i, 12 + i);
    }
    painter.setPen(QPen(colors.separator, 1));
    painter.setBrush(colors.windowBackground);
    painter.drawRoundedRect(card.adjusted(0.5, 0.5, -0.5, -0.5), 12, 12);
}

} // namespace quillnest
