#include "windows/AndroidWindowSession.h"

#include "base/QuillnestLayout.h"
#include "windows/AndroidWindowRegistry.h"

#include <QMenu>

#include <algorithm>
#include <cmath>

// How a window's size is chosen, and how a change of it reaches Android.

namespace quillnest
{

namespace
{
constexpr std::chrono::milliseconds resizeSettles(250);
/// Smaller displays aren't asked for, in pixels.
constexpr int smallestDisplay = 101;
} // namespace

void AndroidWindowSession::showSizeMenu(QWidget *from)
{
    const QSize present = m_videoView->size();
    QMenu menu;
    menu.addAction(QStringLiteral("%1 × %2 | Android").arg(present.width()).arg(present.height()))->setEnabled(false);
    menu.addSeparator();
    for (const auto &preset : QuillnestLayout::presets) {
        auto *item = menu.addAction(preset.label());
        item->setCheckable(true);
        item->setChecked(
            std::abs(present.width() - preset.width) < 2.0 && std::abs(present.height() - preset.height) < 2.0);
        connect(item, &QAction::triggered, this, [this, &preset] { m_registry.applySize(preset); });
    }
    menu.addSeparator();
    menu.addAction(QStringLiteral("Custom: drag a window corner"))->setEnabled(false);
    menu.exec(from->mapToGlobal(QPoint(0, from->height() + 4)));
}

QRect AndroidWindowSession::fittedFrame(QRect frame, QSize wanted, QRect visible)
{
    const QSize size = wanted.boundedTo(visible.size());
    int x = frame.x();
    int y = frame.y();
    if (y + size.height() > visible.y() + visible.height())
        y = visible.y() + visible.height() - size.height();
    if (x + size.width() > visible.x() + visible.width())
        x = visible.x() + visible.width() - size.width();
    return {QPoint(std::max(x, visible.x()), y), size};
}

void AndroidWindowSession::setPanelSize(QSizeF size)
{
    const auto frame = m_panel->frame();
    auto screen = m_services.platform.screens->containing(frame.center());
    if (!screen)
        screen = m_services.platform.screens->main();
    m_panel->setFrame(fittedFrame(frame, size.toSize(), screen ? screen->visibleFrame : frame));
}

void AndroidWindowSession::windowDidResize()
{
    saveFrame();
    QuillnestLayout::setSize(*m_services.platform.settings, m_panel->frame().size());
    // A drag sends one message, after it has stopped for a moment.
    m_resizeWork = m_services.platform.clock->after(resizeSettles, [this] { sendDisplaySize(); });
}

void AndroidWindowSession::sendDisplaySize()
{
    const double scale = m_panel->devicePixelRatioF();
    const auto display = AndroidStreamClient::displaySize(QSizeF(m_videoView->size()) * scale);
    if (display.width() < smallestDisplay || display.height() < smallestDisplay)
        return;
    m_client->send(ScrcpyControl::resizeDisplay(display.width(), display.height()));
    m_log->write(QStringLiteral("Quillnest: resize display %1x%2").arg(display.width()).arg(display.height()));
}

} // namespace quillnest
