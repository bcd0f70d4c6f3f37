#include "launcher/QuillDock.h"

#include "launcher/StatusPill.h"
#include "launcher/grid/AppIcon.h"
#include "look/ContinuousCorners.h"
#include "look/Control.h"
#include "look/ElidedLabel.h"
#include "look/Fonts.h"
#include "look/PlainWords.h"
#include "look/Spinner.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <algorithm>

namespace quillnest
{

namespace
{

constexpr int iconSize = 36;
constexpr int inset = 10;
constexpr int symbolSize = 20;
constexpr int textLeft = inset + iconSize + 12;

struct StateRow {
    const char *symbol;
    const char *title;
    const char *detail;
};

StateRow rowOf(AppLibraryStore::AndroidState state, bool isForApp)
{
    using State = AppLibraryStore::AndroidState;
    switch (state) {
    case State::ready:
        return {"bolt.fill", "Android is ready", "Apps open instantly."};
    case State::starting:
        return {
            "", "Starting Android", isForApp ? "Your app opens in a few seconds." : "It is ready in a few seconds."};
    case State::sleeping:
        return {"moon.zzz.fill", "Android is sleeping", "Opening an app wakes it in about 10 seconds."};
    case State::notSetUp:
        break;
    }
    return {"arrow.down.circle", "Android is not set up", "Set it up above to start using apps."};
}

void setColor(QWidget *widget, const QColor &color)
{
    auto palette = widget->palette();
    palette.setColor(QPalette::WindowText, color);
    widget->setPalette(palette);
}

} // namespace

/// The row under the texts, which takes the click.
class QuillDock::OpenApp : public Control
{
public:
    OpenApp(const Look &look, QWidget *parent) : Control(look, {}, parent)
    {
        setFocusPolicy(Qt::TabFocus);
        setCursor(Qt::PointingHandCursor);
    }

protected:
    void paint(QPainter &painter) override { paintWash(painter, QRectF(rect()).adjusted(1, 1, -1, -1), radius - 1); }
    Ring ring() const override { return {rect(), radius, look().colors.controlAccent}; }

private:
    static constexpr double radius = 12;
};

QuillDock::QuillDock(const PanelServices &services, const PanelLook &look, QWidget *parent)
    : QWidget(parent), m_services(services), m_look(look)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setFixedHeight(sizeHint().height());
    m_openApp = new OpenApp(look, this);
    auto *row = new QHBoxLayout(this);
    placeTexts(*row);
    row->setSpacing(2);
    auto *texts = new QVBoxLayout;
    texts->setSpacing(2);
    texts->addStretch(1);
    m_title = new ElidedLabel(this);
    m_title->setFont(interfaceFont(13, QFont::DemiBold));
    m_detail = new ElidedLabel(this);
    m_detail->setFont(interfaceFont(11));
    for (auto *label : {m_title, m_detail}) {
        label->setTextFormat(Qt::PlainText);
        label->setAttribute(Qt::WA_TransparentForMouseEvents);
        texts->addWidget(label);
    }
    texts->addStretch(1);
    row->addLayout(texts, 1);
    const auto button = [&](const char *symbol, const char *help) {
        auto *made = new HeaderIconButton(look, QLatin1String(symbol), QLatin1String(help), this);
        row->addWidget(made);
        return made;
    };
    m_playPause = button("play.fill", "Play or pause");
    m_next = button("forward.fill", "Next");
    m_close = button("xmark", "Close");
    m_spinner = new Spinner(look, symbolSize, this);
    m_spinner->hide();

    connect(m_openApp, &QAbstractButton::clicked, this, [this] {
        if (m_app)
            m_services.store.launch(MobileApp(*m_app));
    });
    connect(m_close, &QAbstractButton::clicked, this, [this] {
        if (m_app)
            m_services.store.close(MobileApp(*m_app));
    });
    connect(m_playPause, &QAbstractButton::clicked, this, [this] { sendMediaKey(MediaAction::playPause); });
    connect(m_next, &QAbstractButton::clicked, this, [this] { sendMediaKey(MediaAction::next); });
    connect(&services.icons, &AppIconStore::imageChanged, this, [this](QUuid id) {
        if (m_app && m_app->id == id)
            update();
    });
    refresh();
}

void QuillDock::sendMediaKey(MediaAction action)
{
    if (auto *session = m_app ? m_services.windows.session(m_app->id) : nullptr)
        session->sendMediaKey(action);
}

void QuillDock::refresh()
{
    const auto &store = m_services.store;
    const auto &apps = store.apps();
    const auto open = std::find_if(
        apps.begin(), apps.end(), [&store](const MobileApp &app) { return store.runningAppIDs().contains(app.id); });
    m_app = open == apps.end() ? std::nullopt : std::optional(*open);
    const bool plays = m_app && store.nowPlaying() && store.nowPlayingAppID() == m_app->id;
    m_openApp->setVisible(m_app.has_value());
    m_close->setVisible(m_app.has_value());
    m_playPause->setVisible(plays);
    m_next->setVisible(plays);
    if (plays)
        m_playPause->setSymbol(
            store.nowPlaying()->playing ? QStringLiteral("pause.fill") : QStringLiteral("play.fill"));
    if (m_app) {
        m_spinner->hide();
        const auto name = m_app->displayName();
        const auto help = QStringLiteral("Show %1").arg(name);
        m_openApp->setToolTip(plainToolTip(help));
        m_openApp->setName(help);
        m_title->setText(name);
        m_detail->setVisible(plays && !store.nowPlaying()->title.isEmpty());
        if (plays)
            m_detail->setText(store.nowPlaying()->title);
    } else {
        refreshState();
    }
    setColor(m_title, m_look.colors.label);
    setColor(m_detail, m_look.colors.secondaryLabel);
    update();
}

void QuillDock::refreshState()
{
    const auto state = m_services.store.androidState();
    const auto row = rowOf(state, m_services.store.launchingAppID().has_value());
    m_title->setText(QLatin1String(row.title));
    m_detail->setText(QLatin1String(row.detail));
    m_detail->show();
    m_spinner->setVisible(state == AppLibraryStore::AndroidState::starting);
}

void QuillDock::placeTexts(QLayout &row) const
{
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    row.setContentsMargins(mirrored ? inset : textLeft, 8, mirrored ? textLeft : inset, 8);
}

void QuillDock::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LayoutDirectionChange)
        placeTexts(*layout());
    QWidget::changeEvent(event);
}

void QuillDock::resizeEvent(QResizeEvent *)
{
    m_openApp->setGeometry(rect());
    m_openApp->lower();
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    const int middle = inset + iconSize / 2;
    m_spinner->move((mirrored ? width() - middle : middle) - symbolSize / 2, (height() - symbolSize) / 2);
}

void QuillDock::paintEvent(QPaintEvent *)
{
    const auto &colors = m_look.colors;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const auto area = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setPen(m_look.hasWallpaper ? QPen(Qt::NoPen) : QPen(colors.separator, 1));
    painter.setBrush(colors.tile);
    painter.drawPath(continuousRectangle(area, 12));
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    const QRectF icon(mirrored ? width() - inset - iconSize : inset, (height() - iconSize) / 2, iconSize, iconSize);
    if (m_app) {
        AppIcon::paint(painter, icon, m_app->displayName(), m_services.icons.image(*m_app), m_look.style);
        return;
    }
    const auto state = m_services.store.androidState();
    const auto shade = StatusPill::color(state);
    auto ground = shade;
    ground.setAlphaF(m_look.isDark ? 0.2F : 0.13F);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ground);
    painter.drawEllipse(icon);
    const auto symbol = m_look.symbol(QLatin1String(rowOf(state, false).symbol), symbolSize, shade, painter);
    painter.drawPixmap(icon.topLeft() + QPointF(1, 1) * ((iconSize - symbolSize) / 2.0), symbol);
}

} // namespace quillnest
