#pragma once

#include "fakes/FakePlatform.h"
#include "fakes/FakeSymbols.h"
#include "fakes/InPoints.h"
#include "look/Look.h"

#include <QAccessible>
#include <QApplication>
#include <QCursor>
#include <QTest>
#include <QWidget>

#include <gtest/gtest.h>

#include <algorithm>

namespace quillnest
{

/// A window for controls, with the keyboard and the pointer of a user.
class KitFixture : public ::testing::Test
{
protected:
    KitFixture()
    {
        fakes.platform.symbols = symbols;
        look = Look::current(fakes.platform);
        window.setWindowFlag(Qt::FramelessWindowHint);
        window.setFocusPolicy(Qt::ClickFocus);
        window.setAutoFillBackground(true);
        paintGround();
        window.setGeometry(100, 100, 420, 400);
    }

    void setDark(bool on)
    {
        fakes.appearance->setDark(on);
        look = Look::current(fakes.platform);
        paintGround();
    }
    /// A control at a place in the window, as large as it likes to be unless told otherwise.
    template <typename Widget> Widget &put(Widget *widget, QRect area = QRect(20, 20, 0, 0))
    {
        widget->setParent(&window);
        const auto hint = widget->sizeHint();
        const int width = area.width() > 0 ? area.width() : hint.width();
        const int wanted = widget->hasHeightForWidth() ? widget->heightForWidth(width) : hint.height();
        widget->setGeometry(area.x(), area.y(), width, area.height() > 0 ? area.height() : wanted);
        widget->show();
        return *widget;
    }
    void show()
    {
        window.show();
        window.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
        window.setFocus();
        // Wherever the pointer was, it is on none of them.
        movePointer(window.rect().bottomRight() - QPoint(2, 2));
    }
    void movePointer(QPoint point)
    {
        const auto *child = window.childAt(point);
        QCursor::setPos(window.mapToGlobal(point));
        ASSERT_TRUE(QTest::qWaitFor([&] {
            const auto all = window.findChildren<QWidget *>();
            return std::all_of(all.begin(), all.end(), [child](const QWidget *widget) {
                const bool isBelow = child && widget->isEnabled() && (widget == child || widget->isAncestorOf(child));
                return widget->underMouse() == isBelow;
            });
        }));
    }
    void pointAt(const QWidget &widget) { movePointer(widget.geometry().center()); }
    static void focus(QWidget &widget) { widget.setFocus(Qt::TabFocusReason); }

    /// As it is seen in the window, its ground included.
    QImage picture(const QWidget &widget) { return inPoints(window.grab(widget.geometry())); }
    static int count(const QImage &image, const QColor &color, QRect area = {})
    {
        int found = 0;
        const auto within = area.isNull() ? image.rect() : area.intersected(image.rect());
        for (int y = within.top(); y <= within.bottom(); ++y) {
            for (int x = within.left(); x <= within.right(); ++x)
                found += image.pixel(x, y) == color.rgb() ? 1 : 0;
        }
        return found;
    }
    /// What differs between two pictures, as the smallest rectangle around it.
    static QRect difference(const QImage &a, const QImage &b)
    {
        QRect area;
        for (int y = 0; y < a.height(); ++y) {
            for (int x = 0; x < a.width(); ++x) {
                if (a.pixel(x, y) != b.pixel(x, y))
                    area |= QRect(x, y, 1, 1);
            }
        }
        return area;
    }
    static QAccessibleInterface *access(QObject &object) { return QAccessible::queryAccessibleInterface(&object); }

    FakePlatform fakes = fakePlatform();
    std::shared_ptr<FakeSymbols> symbols = std::make_shared<FakeSymbols>();
    Look look;
    QWidget window;

private:
    void paintGround()
    {
        auto palette = window.palette();
        palette.setColor(QPalette::Window, look.colors.windowBackground);
        window.setPalette(palette);
    }
};

} // namespace quillnest
