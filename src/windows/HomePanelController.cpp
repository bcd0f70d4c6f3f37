#include "windows/HomePanelController.h"

#include "base/QuillnestLayout.h"

#include <QVBoxLayout>

namespace quillnest
{

HomePanelController::HomePanelController(const WindowServices &services) : m_services(services) { }

HomePanelController::~HomePanelController() = default;

void HomePanelController::makePanel()
{
    auto *content = makeContent ? makeContent() : nullptr;
    if (!content)
        return;
    m_panel = std::make_unique<AndroidAppPanel>(m_services.platform, AndroidAppPanel::Resizing::fixed);
    m_panel->setMovableByBackground(true);
    m_panel->setWindowTitle(QStringLiteral("Quillnest"));
    auto *layout = new QVBoxLayout(m_panel.get());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(content);
    auto *panel = m_panel.get();
    QObject::connect(panel, &AndroidAppPanel::resignedKey, panel, &AndroidAppPanel::orderOut);
    QObject::connect(panel, &AndroidAppPanel::closeRequested, panel, &AndroidAppPanel::orderOut);
}

void HomePanelController::show(std::optional<QPoint> origin)
{
    if (!m_panel)
        makePanel();
    if (!m_panel)
        return;
    const auto size = QuillnestLayout::size(*m_services.platform.settings).toSize();
    if (!origin) {
        const auto screen = m_services.platform.screens->main();
        const auto visible = screen ? screen->visibleFrame : QRect(QPoint(0, 0), size);
        origin = QPoint(visible.x() + visible.width() - size.width() - 12, visible.y() + 6);
    }
    m_panel->setFrame(QRect(*origin, size));
    m_panel->orderFront();
    m_services.log->write(QStringLiteral("home page shown"));
}

void HomePanelController::orderOut()
{
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
