// quillnest-kit-gallery FOLDER [NAME...]: paints the kit of controls in its states as PNG files.

#include "fakes/FakePlatform.h"
#include "look/Card.h"
#include "look/ChoiceButton.h"
#include "look/ContinuousCorners.h"
#include "look/ElidedLabel.h"
#include "look/FieldRow.h"
#include "look/Fonts.h"
#include "look/Footnote.h"
#include "look/HeaderIconButton.h"
#include "look/InterfaceStyle.h"
#include "look/PopUpPicker.h"
#include "look/ProgressBar.h"
#include "look/PushButton.h"
#include "look/Segment.h"
#include "look/SegmentedControl.h"
#include "look/SettingRow.h"
#include "look/Spinner.h"
#include "platform/HostPlatform.h"

#include <QApplication>
#include <QDir>
#include <QPainter>
#include <QStyle>
#include <QVBoxLayout>

#include <cstdio>

using namespace quillnest;

namespace
{

struct Scene {
    const char *name;
    const char *caption;
    bool dark = false;
    double scale = 2;
    bool mirrored = false;
};

constexpr int margin = 24;
constexpr int nameWidth = 116;
constexpr int cellWidth = 152;
constexpr int cellGap = 10;
constexpr int states = 5;
constexpr int sheetWidth = 2 * margin + nameWidth + states * cellWidth + (states - 1) * cellGap;
constexpr int sheetHeight = 1150;

/// A sheet on which controls are put down one by one.
class Sheet
{
public:
    explicit Sheet(const Scene &scene)
        : m_scene(scene)
        , m_fakes(fakePlatform())
        , m_image((QSizeF(sheetWidth, sheetHeight) * scene.scale).toSize(), QImage::Format_RGB32)
    {
        m_fakes.platform.symbols = hostSymbols();
        m_fakes.appearance->setDark(scene.dark);
        look = Look::current(m_fakes.platform);
        QApplication::setPalette(look.colors.toolkitPalette());
        QApplication::setLayoutDirection(scene.mirrored ? Qt::RightToLeft : Qt::LeftToRight);
        m_image.setDevicePixelRatio(scene.scale);
        m_image.fill(look.colors.windowBackground);
    }

    QImage paint()
    {
        headings();
        const auto plain = [this](PushButton::Kind kind, const char *title) {
            return
                [this, kind, title](int) -> QWidget * { return new PushButton(look, QString::fromUtf8(title), kind); };
        };
        row("Push button", 44, plain(PushButton::Kind::plain, "Choose APK…"));
        row("Prominent", 44, plain(PushButton::Kind::prominent, "Download"));
        row("Destructive", 44, plain(PushButton::Kind::destructive, "Delete"));
        row("Symbol", 40, [this](int) { return new SymbolButton(look, QStringLiteral("camera"), QString()); });
        row("Symbol, on", 40, [this](int) {
            auto *button = new SymbolButton(look, QStringLiteral("pin.fill"), QString());
            button->setSymbol(QStringLiteral("pin.fill"), true);
            return button;
        });
        row("Header", 44, [this](int) { return new HeaderIconButton(look, QStringLiteral("plus"), QString()); });
        for (const bool on : {false, true}) {
            row(on ? "Switch, on" : "Switch", 46, [this, on](int) {
                auto *button = new SettingRow(look, QStringLiteral("One app"));
                button->setChecked(on);
                return button;
            });
        }
        for (const bool on : {false, true}) {
            row(on ? "Choice, chosen" : "Choice", 92, [this, on](int) { return choice(on); });
        }
        row("Picker", 44, [this](int) { return picker(); });
        row("Segments", 44, [this](int) {
            return new SegmentedControl(
                look, QString(), {{QStringLiteral("Day")}, {QStringLiteral("Week")}, {QStringLiteral("All")}});
        });
        row("Segments, chosen", 44, [this](int) {
            auto *segments = new SegmentedControl(
                look, QString(), {{QStringLiteral("Day")}, {QStringLiteral("Week")}, {QStringLiteral("All")}});
            segments->setCurrent(1);
            return segments;
        });
        m_y += 16;
        cards();
        return m_image;
    }

    Look look;

private:
    enum State { normal, hovered, pressed, focused, disabled };

    static QList<QAbstractButton *> pressables(QWidget *widget)
    {
        if (auto *self = qobject_cast<QAbstractButton *>(widget))
            return {self};
        return widget->findChildren<QAbstractButton *>();
    }

    /// Puts a widget down in a state, in the middle of an area or filling its width.
    void put(QWidget *widget, QRect area, State state)
    {
        QWidget host;
        host.resize(area.size());
        widget->setParent(&host);
        const bool fills = widget->sizePolicy().horizontalPolicy() & QSizePolicy::ExpandFlag;
        const int width = fills ? area.width() : std::min(area.width(), widget->sizeHint().width());
        const int height = widget->hasHeightForWidth() ? widget->heightForWidth(width) : widget->sizeHint().height();
        const int left = fills ? 0 : m_scene.mirrored ? area.width() - width : 0;
        widget->setGeometry(left, (area.height() - height) / 2, width, height);
        const auto buttons = pressables(widget);
        // Of several, the one in the middle.
        auto *button = buttons.isEmpty() ? nullptr : buttons[buttons.size() / 2];
        host.show();
        host.activateWindow();
        host.setFocusPolicy(Qt::ClickFocus);
        host.setFocus();
        widget->setEnabled(state != disabled);
        if (button && state == focused)
            button->setFocus(Qt::TabFocusReason);
        m_fakes.settle();
        // Wherever the pointer is.
        for (auto *one : buttons)
            one->setAttribute(Qt::WA_UnderMouse, one == button && (state == hovered || state == pressed));
        if (button)
            button->setDown(state == pressed);
        stamp(host, area.topLeft());
    }

    void stamp(QWidget &widget, QPoint at)
    {
        QImage cell((QSizeF(widget.size()) * m_scene.scale).toSize(), QImage::Format_ARGB32_Premultiplied);
        cell.setDevicePixelRatio(m_scene.scale);
        cell.fill(Qt::transparent);
        widget.render(&cell, {}, {}, QWidget::DrawChildren);
        QPainter painter(&m_image);
        painter.drawImage(at, cell);
    }

    QRect cell(int column, int height) const
    {
        const int width = column < 0 ? nameWidth : cellWidth;
        const int left = column < 0 ? margin : margin + nameWidth + column * (cellWidth + cellGap);
        return {m_scene.mirrored ? sheetWidth - left - width : left, m_y, width, height};
    }

    void write(const QRect &area, const QString &text, bool strong)
    {
        QPainter painter(&m_image);
        painter.setPen(strong ? look.colors.label : look.colors.secondaryLabel);
        painter.setFont(interfaceFont(12, strong ? QFont::DemiBold : QFont::Normal));
        painter.drawText(
            area, QStyle::visualAlignment(QApplication::layoutDirection(), Qt::AlignLeft | Qt::AlignVCenter), text);
    }

    void headings()
    {
        m_y = 16;
        int column = 0;
        for (const auto *name : {"Normal", "Pointer", "Pressed", "Keyboard", "Disabled"})
            write(cell(column++, 28), QLatin1String(name), true);
        m_y += 34;
    }

    void row(const char *name, int height, const std::function<QWidget *(int)> &make)
    {
        write(cell(-1, height), QLatin1String(name), false);
        for (int column = 0; column < states; ++column)
            put(make(column), cell(column, height), static_cast<State>(column));
        m_y += height;
    }

    QWidget *choice(bool on)
    {
        auto *made = new ChoiceButton(look, QStringLiteral("Ocean"), [](QPainter &painter, const QRectF &area) {
            QLinearGradient fill(area.topLeft(), area.bottomRight());
            fill.setColorAt(0, QColor(0x0D4D99));
            fill.setColorAt(1, QColor(0x8CD9E6));
            painter.fillPath(continuousRectangle(area, 9), fill);
        });
        made->setChecked(on);
        made->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
        return made;
    }

    PopUpPicker *picker()
    {
        auto *made = new PopUpPicker(look, QStringLiteral("Stop Android"));
        made->setEntries(
            {{QStringLiteral("After 5 minutes"), 5},
             {QStringLiteral("After 15 minutes"), 15},
             {QStringLiteral("After 30 minutes"), 30},
             {QStringLiteral("Never"), 0}});
        made->setCurrent(15);
        return made;
    }

    /// The kit as it is used: cards of rows, pages, and what shows work.
    void cards()
    {
        constexpr int wide = (sheetWidth - 3 * margin) / 2;
        constexpr int high = 410;
        const auto place = [this](int index) {
            const int left = margin + index * (wide + margin);
            return QPoint(m_scene.mirrored ? sheetWidth - left - wide : left, m_y);
        };
        QWidget first;
        first.resize(wide, high);
        auto *column = new QVBoxLayout(&first);
        column->setContentsMargins(0, 0, 0, 0);
        column->setSpacing(12);
        auto *pages = new SegmentedControl(
            look, QStringLiteral("Page"),
            {{QStringLiteral("General"), QStringLiteral("gearshape")},
             {QStringLiteral("Android"), QStringLiteral("bolt.fill")},
             {QStringLiteral("App lock"), QStringLiteral("lock.fill")},
             {QStringLiteral("Updates"), QStringLiteral("arrow.down.circle")},
             {QStringLiteral("About"), QStringLiteral("checkmark.circle.fill")}});
        column->addWidget(pages);
        auto *apps = new Card(
            look, QStringLiteral("Apps"), {.padding = 8, .spacing = 2, .titleInset = SettingRow::inset}, &first);
        auto *single = new SettingRow(look, QStringLiteral("One app at a time"));
        single->setChecked(true);
        apps->content().addWidget(single);
        apps->content().addWidget(
            new SettingRow(look, QStringLiteral("Start Android when the popup opens (apps open faster)")));
        apps->content().addWidget(new FieldRow(look, QStringLiteral("Stop Android when no app is open"), picker()));
        column->addWidget(apps);
        auto *versions = new Card(
            look, QStringLiteral("Android version"), {.padding = 8, .spacing = 2, .titleInset = SettingRow::inset},
            &first);
        versions->content().addWidget(new FieldRow(
            look, QStringLiteral("Android 13"),
            new PushButton(look, QStringLiteral("Delete"), PushButton::Kind::destructive)));
        auto *off = new SettingRow(look, QStringLiteral("F-Droid"));
        off->setEnabled(false);
        versions->content().addWidget(off);
        auto *note = new QWidget;
        auto *inset = new QVBoxLayout(note);
        inset->setContentsMargins(SettingRow::inset, 2, SettingRow::inset, 6);
        inset->addWidget(new Footnote(
            look,
            QStringLiteral("Each version has its own apps and data. Changing it restarts Android; your apps install "
                           "again on the new version when you open them.")));
        versions->content().addWidget(note);
        column->addWidget(versions);
        column->addStretch(1);
        show(first, place(0));

        QWidget second;
        second.resize(wide, high);
        auto *stack = new QVBoxLayout(&second);
        stack->setContentsMargins(0, 0, 0, 0);
        stack->setSpacing(12);
        auto *news = new Card(look, QStringLiteral("Lantern"), {.radius = 22}, &second);
        news->setSymbol(QStringLiteral("bell"));
        for (const auto &[text, weight] :
             {std::pair("Low tide at half past six", QFont::DemiBold), std::pair("Bring the lamp.", QFont::Normal)}) {
            auto *label = new ElidedLabel(QLatin1String(text));
            label->setFont(interfaceFont(13, weight));
            news->content().addWidget(label);
        }
        stack->addWidget(news);
        auto *work = new Card(look, {}, &second);
        auto *busy = new QHBoxLayout;
        busy->setSpacing(10);
        auto *spinner = new Spinner(look, 16);
        busy->addWidget(spinner);
        busy->addWidget(new Footnote(look, QStringLiteral("Downloading the emulator…")), 1);
        auto *bar = new ProgressBar(look);
        bar->setFraction(0.62);
        work->content().setSpacing(12);
        work->content().addLayout(busy);
        work->content().addWidget(bar);
        work->content().addWidget(
            new Footnote(look, QStringLiteral("Debian did not allow this: no such folder"), Footnote::Tone::attention));
        stack->addWidget(work);
        auto *open = picker();
        stack->addWidget(open, 0, Qt::AlignLeading);
        stack->addStretch(1);
        second.setFocusPolicy(Qt::ClickFocus);
        second.show();
        second.setFocus();
        m_fakes.clock->advance(std::chrono::milliseconds(250));
        m_fakes.settle();
        calm(second);
        stamp(second, place(1));
        open->click();
        m_fakes.settle();
        if (open->menu()) {
            const auto left = m_scene.mirrored ? wide - open->menu()->width() : 0;
            stamp(*open->menu(), place(1) + QPoint(left, open->geometry().bottom() + 8));
            open->menu()->close();
        }
    }

    void show(QWidget &widget, QPoint at)
    {
        widget.setFocusPolicy(Qt::ClickFocus);
        widget.show();
        widget.setFocus();
        m_fakes.settle();
        calm(widget);
        stamp(widget, at);
    }

    static void calm(QWidget &widget)
    {
        for (auto *button : widget.findChildren<QAbstractButton *>())
            button->setAttribute(Qt::WA_UnderMouse, false);
    }

    const Scene m_scene;
    FakePlatform m_fakes;
    QImage m_image;
    int m_y = 0;
};

constexpr Scene scenes[]{
    {.name = "kit-light", .caption = "Light"},
    {.name = "kit-dark", .caption = "Dark", .dark = true},
    {.name = "kit-light-1x", .caption = "Light, one pixel to a point", .scale = 1},
    {.name = "kit-mirrored",
     .caption = "From right to left, dark, one pixel to a point",
     .dark = true,
     .scale = 1,
     .mirrored = true},
};

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    QApplication::setStyle(new InterfaceStyle);
    QApplication::setFont(interfaceFont(13));
    const auto arguments = QApplication::arguments();
    if (arguments.size() < 2 || !QDir().mkpath(arguments[1])) {
        std::fputs("usage: quillnest-kit-gallery FOLDER [NAME...]\n", stderr);
        return 2;
    }
    const auto wanted = arguments.mid(2);
    for (const auto &scene : scenes) {
        if (!wanted.isEmpty() && !wanted.contains(QLatin1String(scene.name)))
            continue;
        const auto image = Sheet(scene).paint();
        if (!image.save(QStringLiteral("%1/%2.png").arg(arguments[1], QLatin1String(scene.name)), "PNG", 0))
            return 1;
        std::printf("%s: %s\n", scene.name, scene.caption);
    }
    return 0;
}
