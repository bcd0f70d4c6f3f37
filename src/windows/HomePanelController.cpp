#include "windows/HomePanelController.h"

#include "base/QuillnestLayout.h"
#include "windows/WindowPlacement.h"

#include <QApplication>
#include <QVBoxLayout>

#include <utility>

namespace quillnest
{

namespace
{
/// How often something that took the keyboard for a while is looked at.
constexpr std::chrono::milliseconds lookAgain(100);
} // namespace

HomePanelController::HomePanelController(const WindowServices &services) : m_services(services) { }

HomePanelController::~HomePanelController() = default;

void HomePanelController::makePanel()
{
    auto *content = makeContent ? makeContent() : nullptr;
    if (!content)
        return;
    m_panel = std::make_unique<AndroidAppPanel>(m_services.platform, AndroidAppPanel::Resizing::fixed);
    m_panel->setMovableByBackground(true);
    m_panel->setFloating(true);
    m_panel->setWindowTitle(QStringLiteral("Quillnest"));
    auto *layout = new QVBoxLayout(m_panel.get());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(content);
    auto *panel = m_panel.get();
    QObject::connect(panel, &AndroidAppPanel::resignedKey, panel, [this] { leave(); });
    QObject::connect(panel, &AndroidAppPanel::becameKey, panel, [this] { forgetLeaving(); });
    QObject::connect(panel, &AndroidAppPanel::closeRequested, panel, &AndroidAppPanel::orderOut);
}

void HomePanelController::leave()
{
    m_leaving.reset();
    if (!m_panel->isVisible() || m_panel->isActiveWindow())
        return;
    // A press in another program's window may be the beginning of a drag to this one.
    const bool hasDialog = QApplication::activeModalWidget();
    const bool isDragged = m_services.platform.screens->isMouseButtonDown();
    if (hasDialog || isDragged) {
        m_comesBack = m_comesBack || hasDialog;
        m_isDraggedTo = m_isDraggedTo || isDragged;
        m_leaving = m_services.platform.clock->after(lookAgain, [this] { leave(); });
        return;
    }
    const bool wasDropped = std::exchange(m_isDraggedTo, false) && m_panel->frame().contains(QCursor::pos());
    if (std::exchange(m_comesBack, false) || wasDropped)
        m_panel->orderFront();
    else
        m_panel->orderOut();
}

void HomePanelController::show(std::optional<QPoint> origin)
{
    if (!m_panel)
        makePanel();
    if (!m_panel)
        return;
    const auto &screens = *m_services.platform.screens;
    const auto size = QuillnestLayout::launcherSize(*m_services.platform.settings);
    if (const auto screen = screens.main(); screen && !origin)
        origin = WindowPlacement::launcherOrigin(*screen, size);
    forgetLeaving();
    const auto anchor = origin ? std::optional(QRect(*origin, size)) : std::nullopt;
    m_panel->setFrame(WindowPlacement::initialFrame(screens, {}, size, anchor, {}));
    m_panel->orderFront();
    m_services.log->write(QStringLiteral("home page shown"));
}

void HomePanelController::forgetLeaving()
{
    m_leaving.reset();
    m_comesBack = false;
    m_isDraggedTo = false;
}

void HomePanelController::orderOut()
{
    forgetLeaving();
    if (m_panel)
        m_panel->orderOut();
}

std::optional<QRect> HomePanelController::visibleFrame() const
{
    if (!m_panel || !m_panel->isVisible())
        return std::nullopt;
    return m_panel->frame();
}

} // namespace quillnest
