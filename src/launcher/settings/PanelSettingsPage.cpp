#include "launcher/settings/PanelSettingsPage.h"

#include "core/CoreSettings.h"
#include "features/adblock/AdBlockSettings.h"
#include "launcher/LauncherSettings.h"
#include "launcher/grid/AppIcon.h"
#include "launcher/wallpaper/PanelBackground.h"
#include "launcher/wallpaper/Wallpaper.h"
#include "look/ChoiceButton.h"
#include "look/ContinuousCorners.h"
#include "look/Fonts.h"
#include "look/Footnote.h"
#include "look/SettingRow.h"
#include "windows/WindowSettings.h"

#include <QGridLayout>
#include <QLabel>
#include <QPainter>
#include <QPointer>
#include <QVBoxLayout>

namespace quillnest
{

namespace
{

constexpr int margin = 16;
constexpr double sampleRadius = 9;

/// What has no room of its own around it, as far in as the rows' words.
QLayout *inset(QWidget *widget, int room = SettingRow::inset)
{
    auto *row = new QHBoxLayout;
    row->setContentsMargins(room, 0, room, 0);
    row->addWidget(widget);
    return row;
}

void setColor(QLabel *label, const QColor &color)
{
    auto palette = label->palette();
    palette.setColor(QPalette::WindowText, color);
    label->setPalette(palette);
}

/// Two icons in a style's shape.
ChoiceButton::Sample sampleOf(const PanelLook &look, ThemeStyle style)
{
    return [&look, style](QPainter &painter, const QRectF &area) {
        auto ground = look.colors.label;
        ground.setAlphaF(0.07F);
        painter.fillPath(continuousRectangle(area, sampleRadius), ground);
        constexpr double side = 22;
        const auto &colors = AppIcon::palettes();
        for (int i = 0; i < 2; ++i) {
            const QRectF icon(area.center().x() - side - 3 + i * (side + 6), area.center().y() - side / 2, side, side);
            QLinearGradient fill(icon.topLeft(), icon.bottomRight());
            fill.setColorAt(0, colors[i == 0 ? 0 : 2].first);
            fill.setColorAt(1, colors[i == 0 ? 0 : 2].second);
            painter.fillPath(continuousRectangle(icon, AppIcon::radius(side, style)), fill);
        }
    };
}

void paintSample(QPainter &painter, const QRectF &area, const QImage &image)
{
    const double scale = painter.deviceTransform().m11();
    QBrush brush(image);
    brush.setTransform(QTransform::fromScale(1 / scale, 1 / scale) * QTransform::fromTranslate(area.x(), area.y()));
    painter.fillPath(continuousRectangle(area, sampleRadius), brush);
}

} // namespace

PanelSettingsPage::PanelSettingsPage(const PanelServices &services, const PanelLook &look, QWidget *parent)
    : QWidget(parent), m_services(services), m_look(look)
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(margin - SettingRow::inset, 4, margin - SettingRow::inset, 16);
    column->setSpacing(0);

    addHeading(column, QStringLiteral("General"));
    m_openAtLogin = new SettingRow(
        look, QStringLiteral("Open Quillnest when the %1 starts").arg(services.platform.profile.machineWord), this);
    column->addWidget(m_openAtLogin);
    m_loginError = new Footnote(look, {}, Footnote::Tone::attention, this);
    m_loginError->hide();
    column->addLayout(inset(m_loginError));
    connect(m_openAtLogin, &QAbstractButton::clicked, this, [this](bool on) {
        auto &items = *m_services.platform.loginItems;
        const auto failure = items.set(on);
        m_loginError->setWords(
            failure ? QStringLiteral("%1 did not allow this: %2").arg(m_services.platform.profile.systemName, *failure)
                    : QString());
        m_loginError->setVisible(failure.has_value());
        m_openAtLogin->setChecked(items.status() == LoginItems::Status::enabled);
    });
    addFlag(column, WindowSettings::singleApp, QStringLiteral("One app at a time"));
    addFlag(
        column, CoreSettings::prewarm,
        QStringLiteral("Start Android when the Quillnest popup opens (apps open faster)"));
    addFlag(column, AdBlockSettings::enabled, QStringLiteral("Block ads and trackers in all Android apps"));
    addHeading(column, QStringLiteral("Home screen style"));
    addThemes(column);
    addHeading(column, QStringLiteral("Wallpaper"));
    addWallpapers(column);
    column->addStretch(1);
    connect(services.platform.settings.get(), &SettingsStore::changed, this, &PanelSettingsPage::refresh);
    refresh();
}

void PanelSettingsPage::addHeading(QVBoxLayout *column, const QString &text)
{
    auto *label = new QLabel(text, this);
    label->setFont(interfaceFont(13, QFont::DemiBold));
    label->setFixedHeight(36);
    label->setAlignment(Qt::AlignVCenter | Qt::AlignLeading);
    column->addLayout(inset(label));
    m_headings.push_back(label);
}

void PanelSettingsPage::addFlag(QVBoxLayout *column, const Setting<bool> &setting, const QString &text)
{
    auto *row = new SettingRow(m_look, text, this);
    column->addWidget(row);
    connect(row, &QAbstractButton::clicked, this, [this, setting](bool on) {
        setting.set(*m_services.platform.settings, on);
    });
    m_readers.push_back([this, row, setting] { row->setChecked(setting.value(*m_services.platform.settings)); });
}

void PanelSettingsPage::addThemes(QVBoxLayout *column)
{
    struct Entry {
        const char *name;
        const char *value;
    };
    constexpr Entry entries[]{
        {"Classic", "classic"}, {"One UI style", "oneui"}, {"iOS style", "ios"}, {"Pixel style", "pixel"}};
    auto *group = new QWidget(this);
    auto *row = new QHBoxLayout(group);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(4);
    for (const auto &entry : entries) {
        const auto value = QString(QLatin1String(entry.value));
        const auto style = QuillnestTheme::style(value);
        auto *button = new ChoiceButton(m_look, QLatin1String(entry.name), sampleOf(m_look, style), group);
        row->addWidget(button);
        connect(button, &QAbstractButton::clicked, this, [this, value] {
            LauncherSettings::theme.set(*m_services.platform.settings, value);
        });
        m_readers.push_back([this, button, style] { button->setChecked(m_look.style == style); });
    }
    // The samples have a little room around them, for their rings.
    column->addLayout(inset(group, SettingRow::inset - 4));
}

void PanelSettingsPage::addWallpapers(QVBoxLayout *column)
{
    auto *group = new QWidget(this);
    auto *grid = new QGridLayout(group);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(4);
    int index = 0;
    const auto add = [&](const QString &id, const QString &name, ChoiceButton::Sample sample) {
        auto *button = new ChoiceButton(m_look, name, std::move(sample), group);
        grid->addWidget(button, index / 4, index % 4);
        ++index;
        connect(button, &QAbstractButton::clicked, this, [this, id] { chooseWallpaper(id); });
        m_readers.push_back([this, button, id, name] {
            const auto selected = Wallpaper::selected(m_services.platform);
            button->setChecked(selected == id);
            if (id == Wallpaper::customId())
                button->setName(selected == id ? QStringLiteral("My photo") : name);
        });
        return button;
    };
    add(QStringLiteral("none"), QStringLiteral("None"), [this](QPainter &painter, const QRectF &area) {
        // A line that can be seen on the very ground that is chosen here.
        auto line = m_look.colors.label;
        line.setAlphaF(0.35F);
        painter.setPen(QPen(line, 1));
        painter.setBrush(Look::current(m_services.platform).colors.windowBackground);
        painter.drawPath(continuousRectangle(area.adjusted(0.5, 0.5, -0.5, -0.5), sampleRadius));
    });
    for (const auto &preset : Wallpaper::presets())
        add(preset.id, preset.name, [this, id = preset.id](QPainter &painter, const QRectF &area) {
            const auto pixels = (area.size() * painter.deviceTransform().m11()).toSize();
            // As the panel would have it, glass and all.
            paintSample(
                painter, area,
                WallpaperView::render(m_services.platform, id, pixels, PanelBackground::material(m_look)));
        });
    m_photoButton
        = add(Wallpaper::customId(), QStringLiteral("Choose a photo…"), [this](QPainter &painter, const QRectF &area) {
              const bool isChosen
                  = Wallpaper::selected(m_services.platform) == Wallpaper::customId() && m_look.hasWallpaper;
              if (isChosen)
                  readPhotoSample((area.size() * painter.deviceTransform().m11()).toSize());
              if (isChosen && !m_photoSample.isNull()) {
                  paintSample(painter, area, m_photoSample);
                  return;
              }
              auto ground = m_look.colors.label;
              ground.setAlphaF(0.07F);
              painter.fillPath(continuousRectangle(area, sampleRadius), ground);
              constexpr int side = 20;
              painter.drawPixmap(
                  area.center() - QPointF(side / 2.0, side / 2.0),
                  m_look.symbol(QStringLiteral("photo"), side, m_look.colors.secondaryLabel, painter));
          });
    m_photoButton->setToolTip(QStringLiteral("Change photo…"));
    // Its name is the longest.
    grid->addWidget(m_photoButton, 1, 2, 1, 2);
    for (int i = 0; i < 4; ++i)
        grid->setColumnStretch(i, 1);
    // The samples have a little room around them, for their rings.
    column->addLayout(inset(group, SettingRow::inset - 4));
}

void PanelSettingsPage::readPhotoSample(QSize pixels)
{
    const auto &platform = m_services.platform;
    const auto key = QStringLiteral("%1 %2x%3 %4")
                         .arg(LauncherSettings::wallpaperRevision.value(*platform.settings))
                         .arg(pixels.width())
                         .arg(pixels.height())
                         .arg(m_look.isDark);
    if (m_photoKey == key)
        return;
    m_photoKey = key;
    m_photoSample = {};
    // A photo has millions of pixels; the interface goes on meanwhile.
    platform.executor->inBackground(
        [self = QPointer(this), platform, pixels, key, material = PanelBackground::material(m_look)] {
            const auto sample = WallpaperView::render(platform, Wallpaper::customId(), pixels, material);
            platform.executor->onMain([self, key, sample] {
                if (!self || self->m_photoKey != key)
                    return;
                self->m_photoSample = sample;
                self->m_photoButton->update();
            });
        });
}

void PanelSettingsPage::chooseWallpaper(const QString &id)
{
    if (id == Wallpaper::customId())
        choosePhoto();
    else
        LauncherSettings::wallpaper.set(*m_services.platform.settings, id);
}

void PanelSettingsPage::choosePhoto()
{
    // Until a photo has been chosen, the wallpaper stays as it is.
    refresh();
    Wallpaper::chooseCustom(m_services.platform, [settings = m_services.platform.settings](bool chosen) {
        if (!chosen)
            return;
        LauncherSettings::wallpaperRevision.set(*settings, LauncherSettings::wallpaperRevision.value(*settings) + 1);
        LauncherSettings::wallpaper.set(*settings, Wallpaper::customId());
    });
}

void PanelSettingsPage::refresh()
{
    for (auto *heading : m_headings)
        setColor(heading, m_look.colors.secondaryLabel);
    for (const auto &read : m_readers)
        read();
    update();
}

void PanelSettingsPage::showEvent(QShowEvent *)
{
    m_openAtLogin->setChecked(m_services.platform.loginItems->status() == LoginItems::Status::enabled);
}

} // namespace quillnest
