#include "windows/AndroidVideoView.h"

#include "fakes/FakePlatform.h"
#include "windows/WindowFakes.h"

#include <QApplication>
#include <QDropEvent>
#include <QInputMethodQueryEvent>
#include <QMimeData>

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{

class AndroidVideoViewTest : public ::testing::Test
{
protected:
    AndroidVideoViewTest()
    {
        fakes.platform.video = video;
        view = std::make_unique<AndroidVideoView>(fakes.platform);
        view->resize(400, 800);
    }

    /// Whether the view takes what is dragged over it, and whether it takes what is dropped.
    std::pair<bool, bool> drop(const QList<QUrl> &urls)
    {
        QMimeData data;
        data.setUrls(urls);
        QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        enter.ignore();
        QApplication::sendEvent(view.get(), &enter);
        QDropEvent event(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        event.ignore();
        QApplication::sendEvent(view.get(), &event);
        return {enter.isAccepted(), event.isAccepted()};
    }

    FakePlatform fakes = fakePlatform();
    std::shared_ptr<FakeVideo> video = std::make_shared<FakeVideo>();
    std::unique_ptr<AndroidVideoView> view;
};

} // namespace

TEST_F(AndroidVideoViewTest, droppedFilesAreHandedOnWithoutTheFoldersAmongThem)
{
    QList<QUrl> dropped;
    view->onFilesDropped = [&dropped](const QList<QUrl> &files) { dropped = files; };
    const auto file = QUrl::fromLocalFile(fakes.writeFile(QStringLiteral("a.txt"), "a"));
    const auto folder = QUrl::fromLocalFile(fakes.home->path());
    EXPECT_EQ(drop({folder, file}), std::pair(true, true));
    EXPECT_EQ(dropped, QList<QUrl>{file});
}

TEST_F(AndroidVideoViewTest, aFolderAloneAndAWebAddressAreRefused)
{
    int drops = 0;
    view->onFilesDropped = [&drops](const QList<QUrl> &) { ++drops; };
    EXPECT_EQ(drop({QUrl::fromLocalFile(fakes.home->path())}), std::pair(false, false));
    EXPECT_EQ(drop({QUrl(QStringLiteral("https://example.org/a.txt"))}), std::pair(false, false));
    EXPECT_EQ(drop({}), std::pair(false, false));
    EXPECT_EQ(drops, 0);
}

TEST_F(AndroidVideoViewTest, withNobodyToTakeFilesDropsAreRefused)
{
    const auto file = QUrl::fromLocalFile(fakes.writeFile(QStringLiteral("a.txt"), "a"));
    EXPECT_EQ(drop({file}), std::pair(false, false));
}

TEST_F(AndroidVideoViewTest, aBorderStandsWhileFilesAreDraggedOver)
{
    view->onFilesDropped = [](const QList<QUrl> &) {};
    const auto edge = [this] { return view->grab().toImage().pixelColor(1, 400); };
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(fakes.writeFile(QStringLiteral("a.txt"), "a"))});
    EXPECT_EQ(edge(), QColor(Qt::black));
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view.get(), &enter);
    EXPECT_NE(edge(), QColor(Qt::black));
    QDragLeaveEvent leave;
    QApplication::sendEvent(view.get(), &leave);
    EXPECT_EQ(edge(), QColor(Qt::black));
    QApplication::sendEvent(view.get(), &enter);
    QDropEvent event(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view.get(), &event);
    EXPECT_EQ(edge(), QColor(Qt::black));
}

TEST_F(AndroidVideoViewTest, aFolderDraggedOverAloneShowsNoBorder)
{
    view->onFilesDropped = [](const QList<QUrl> &) {};
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(fakes.home->path())});
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view.get(), &enter);
    EXPECT_EQ(view->grab().toImage().pixelColor(1, 400), QColor(Qt::black));
}

TEST_F(AndroidVideoViewTest, anInputMethodIsOfferedAPlace)
{
    view->setAttribute(Qt::WA_InputMethodEnabled);
    QInputMethodQueryEvent query(Qt::ImEnabled | Qt::ImCursorRectangle);
    QApplication::sendEvent(view.get(), &query);
    EXPECT_TRUE(query.value(Qt::ImEnabled).toBool());
    const auto place = query.value(Qt::ImCursorRectangle).toRect();
    EXPECT_TRUE(view->rect().contains(place));
    EXPECT_FALSE(place.isEmpty());
}
