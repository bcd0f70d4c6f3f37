#include "launcher/SearchField.h"

#include "look/Fonts.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>

namespace quillnest
{

namespace
{
constexpr int symbolSize = 14;
constexpr int textSize = 13;
} // namespace

SearchField::SearchField(const PanelLook &look, QWidget *parent)
    : QWidget(parent)
    , m_look(look)
    , m_edit(new QLineEdit(this))
    , m_clear(new HeaderIconButton(look, QStringLiteral("xmark.circle.fill"), QStringLiteral("Clear search"), this))
{
    m_edit->setFrame(false);
    m_edit->setFont(interfaceFont(textSize));
    m_edit->setPlaceholderText(QStringLiteral("Search apps"));
    m_edit->setAccessibleName(QStringLiteral("Search apps"));
    m_edit->installEventFilter(this);
    m_edit->setContextMenuPolicy(Qt::NoContextMenu);
    m_clear->setSymbolSize(symbolSize);
    m_clear->hide();
    auto *row = new QHBoxLayout(this);
    row->setSpacing(4);
    row->addWidget(m_edit, 1);
    row->addWidget(m_clear);
    setFocusProxy(m_edit);
    connect(m_edit, &QLineEdit::textChanged, this, [this](const QString &text) {
        m_clear->setVisible(!text.isEmpty());
        Q_EMIT edited(text);
    });
    connect(m_edit, &QLineEdit::returnPressed, this, &SearchField::accepted);
    connect(m_clear, &QAbstractButton::clicked, m_edit, [this] {
        m_edit->clear();
        m_edit->setFocus();
    });
    refresh();
}

int SearchField::heightOf(ThemeStyle style)
{
    switch (style) {
    case ThemeStyle::pixel:
        return 44;
    case ThemeStyle::oneui:
        return 40;
    case ThemeStyle::ios:
        return 36;
    case ThemeStyle::classic:
        break;
    }
    return 32;
}

QString SearchField::text() const
{
    return m_edit->text();
}

void SearchField::setText(const QString &text)
{
    if (m_edit->text() != text)
        m_edit->setText(text);
}

void SearchField::take(const QString &typed)
{
    m_edit->setFocus(Qt::OtherFocusReason);
    m_edit->end(false);
    m_edit->insert(typed);
}

void SearchField::refresh()
{
    setFixedHeight(heightOf(m_look.style));
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    constexpr int room = 12 + symbolSize + 4;
    layout()->setContentsMargins(mirrored ? 4 : room, 0, mirrored ? room : 4, 0);
    auto palette = m_edit->palette();
    palette.setColor(QPalette::Base, Qt::transparent);
    palette.setColor(QPalette::Text, m_look.colors.label);
    palette.setColor(QPalette::PlaceholderText, m_look.colors.tertiaryLabel);
    palette.setColor(QPalette::Highlight, m_look.colors.controlAccent);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    m_edit->setPalette(palette);
    update();
}

void SearchField::paintEvent(QPaintEvent *)
{
    const auto &colors = m_look.colors;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor fill = colors.field;
    auto line = m_look.hasWallpaper ? QColor(Qt::transparent) : colors.separator;
    double radius = 8;
    switch (m_look.style) {
    case ThemeStyle::classic:
        break;
    case ThemeStyle::ios:
        radius = 10;
        line = Qt::transparent;
        fill = m_look.isDark ? QColor(255, 255, 255, 26) : QColor(118, 118, 128, m_look.hasWallpaper ? 60 : 30);
        break;
    case ThemeStyle::oneui:
        radius = height() / 2.0;
        line = Qt::transparent;
        fill = m_look.isDark ? QColor(255, 255, 255, 20) : QColor(255, 255, 255, m_look.hasWallpaper ? 150 : 255);
        break;
    case ThemeStyle::pixel: {
        // The accent's own shade, as faint as paper.
        radius = height() / 2.0;
        line = Qt::transparent;
        fill = colors.controlAccent;
        fill.setAlpha(m_look.isDark ? 46 : 28);
        break;
    }
    }
    const auto area = QRectF(rect());
    painter.setBrush(fill);
    painter.setPen(m_edit->hasFocus() ? QPen(colors.controlAccent, 2) : QPen(line, 1));
    const double half = m_edit->hasFocus() ? 1 : 0.5;
    if (line.alpha() == 0 && !m_edit->hasFocus())
        painter.setPen(Qt::NoPen);
    painter.drawRoundedRect(area.adjusted(half, half, -half, -half), radius - half, radius - half);
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    const auto symbol = m_look.symbol(QStringLiteral("magnifyingglass"), symbolSize, colors.secondaryLabel, painter);
    painter.drawPixmap(QPointF(mirrored ? width() - 12 - symbolSize : 12, (height() - symbolSize) / 2), symbol);
}

bool SearchField::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut)
        update();
    if (event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        const bool sideways = key->key() == Qt::Key_Left || key->key() == Qt::Key_Right;
        // With nothing to move in, the arrows are for the tiles.
        if (key->key() == Qt::Key_Down || (sideways && m_edit->text().isEmpty())) {
            Q_EMIT leftDownwards();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void SearchField::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LayoutDirectionChange)
        refresh();
    QWidget::changeEvent(event);
}

void SearchField::mousePressEvent(QMouseEvent *)
{
    m_edit->setFocus(Qt::MouseFocusReason);
}

} // namespace quillnest
