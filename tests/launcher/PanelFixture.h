#pragma once

#include "CoreFixture.h"
#include "LaunchFixture.h"
#include "fakes/IconOfFile.h"
#include "fakes/InPoints.h"
#include "launcher/MenuPanel.h"
#include "launcher/grid/AppGrid.h"

#include <QAbstractButton>
#include <QApplication>
#include <QBuffer>
#include <QFileInfo>
#include <QLabel>
#include <QMenu>
#include <QTest>

namespace quillnest
{

/// The panel on a store whose launches wait, so that what a click begins stays on show.
class PanelFixture : public virtual CoreFixture
{
protected:
    PanelFixture()
    {
        fakes.platform.symbols = std::make_shared<FakeSymbols>();
        cleanDevice();
        makePanel();
    }
    ~PanelFixture() override { panel.reset(); }

    void makePanel()
    {
        panel.reset();
        services.emplace(PanelServices{
            .platform = fakes.platform,
            .store = *store,
            .icons = icons,
            .windows = *registry,
            .locks = locks,
            .makeSetupView = makeSetupView,
            .quit = [this] { ++quits; }});
        panel = std::make_unique<MenuPanel>(*services);
        panel->setWindowFlag(Qt::FramelessWindowHint);
        panel->setGeometry(100, 100, 390, 760);
        panel->show();
        panel->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(panel.get()));
    }

    template <typename Part> Part *part() const { return panel->findChild<Part *>(); }
    AppGrid &grid() const
    {
        fakes.settle();
        return *part<AppGrid>();
    }

    /// What stands in the grid: headings before their tiles, as they are seen.
    QStringList shown()
    {
        const auto &all = grid();
        if (!all.isVisible())
            return {};
        QStringList result;
        std::size_t heading = 0;
        for (int i = 0; i < all.count(); ++i) {
            while (heading < all.headings().size() && all.headings()[heading].area.y() < all.tileRect(i).y())
                result.append(QStringLiteral("[%1]").arg(all.headings()[heading++].text));
            result.append(all.tile(i).name());
        }
        return result;
    }
    QStringList names()
    {
        QStringList result;
        for (int i = 0; i < grid().count(); ++i)
            result.append(grid().tile(i).name());
        return result;
    }
    /// How many tiles stand side by side.
    int perRow()
    {
        int count = 0;
        while (count < grid().count() && grid().tileRect(count).y() == grid().tileRect(0).y())
            ++count;
        return count;
    }
    int indexOf(const QString &name)
    {
        const auto index = names().indexOf(name);
        if (index < 0)
            throw std::runtime_error("no such tile");
        return static_cast<int>(index);
    }
    void click(int index, Qt::MouseButton button = Qt::LeftButton)
    {
        QTest::mouseClick(&grid(), button, {}, grid().tileRect(index).center());
    }
    QAbstractButton *button(const QString &name) const
    {
        for (auto *found : panel->findChildren<QAbstractButton *>()) {
            if (found->accessibleName() == name && found->isVisibleTo(panel.get()))
                return found;
        }
        return nullptr;
    }
    bool shows(const QString &text) const
    {
        for (const auto *label : panel->findChildren<QLabel *>()) {
            if (label->text() == text && label->isVisibleTo(panel.get()))
                return true;
        }
        return false;
    }
    /// How the tile of an app looks.
    QImage look(const QString &name) { return inPoints(grid().grab(grid().tileRect(indexOf(name)))); }

    /// The entries of the menu that is open, separators left out.
    static QMenu *openMenu() { return qobject_cast<QMenu *>(QApplication::activePopupWidget()); }
    static QStringList entries(const QMenu *menu)
    {
        QStringList result;
        for (const auto *action : menu->actions()) {
            if (!action->isSeparator())
                result.append(action->text());
        }
        return result;
    }
    static void choose(QMenu *menu, const QString &entry)
    {
        for (auto *action : menu->actions()) {
            if (action->text() == entry) {
                action->trigger();
                menu->close();
                return;
            }
        }
        throw std::runtime_error("no such entry");
    }

    void set(const char *key, const QVariant &value)
    {
        fakes.settings->setValue(QLatin1String(key), value);
        fakes.settle();
    }

    /// The icons that packages have, by the name of their app; what reading them out costs isn't this test's concern.
    std::map<std::string, QImage> packageIcons;
    AppIconStore icons{fakes.platform, log, [this](const APKIconExtractor::IconTools &, const std::string &path) {
                           return iconOf(path);
                       }};
    std::function<QWidget *(QWidget *)> makeSetupView;
    int quits = 0;
    std::optional<PanelServices> services;
    std::unique_ptr<MenuPanel> panel;

private:
    std::optional<APKIconExtractor::Icon> iconOf(const std::string &path) const
    {
        const auto found = packageIcons.find(QFileInfo(QString::fromStdString(path)).baseName().toStdString());
        if (found == packageIcons.end())
            return std::nullopt;
        QByteArray png;
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        found->second.save(&buffer, "PNG");
        return iconOfFile(*fakes.platform.drawing, {png.begin(), png.end()});
    }
};

/// The same, with a device whose apps open windows.
class LivePanelFixture : public LaunchFixture, public PanelFixture
{
};

} // namespace quillnest
