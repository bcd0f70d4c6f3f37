#include "platform/desktop/DesktopPasteboard.h"

#include "platform/Conditions.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <QProcess>
#include <QWidget>

#include <gtest/gtest.h>

using namespace quillnest;

TEST(DesktopPasteboardTest, textComesBackAndCountsAsAChange)
{
    DesktopPasteboard pasteboard;
    const int before = pasteboard.changeCount();
    pasteboard.setString(QStringLiteral("größe\n\U0001F44D"));
    EXPECT_TRUE(comesTrue([&] { return pasteboard.changeCount() > before; }));
    EXPECT_EQ(pasteboard.string(), QStringLiteral("größe\n\U0001F44D"));
}

TEST(DesktopPasteboardTest, pictureIsNoText)
{
    DesktopPasteboard pasteboard;
    QImage image(4, 4, QImage::Format_RGB32);
    image.fill(Qt::red);
    QGuiApplication::clipboard()->setImage(image);
    EXPECT_EQ(pasteboard.string(), std::nullopt);
}

TEST(DesktopPasteboardTest, whatAPasswordManagerMarksIsSecret)
{
    DesktopPasteboard pasteboard;
    const auto put = [](const char *hint) {
        auto *data = new QMimeData;
        data->setText(QStringLiteral("password"));
        if (hint)
            data->setData(QStringLiteral("x-kde-passwordManagerHint"), hint);
        QGuiApplication::clipboard()->setMimeData(data);
    };
    put(nullptr);
    EXPECT_FALSE(pasteboard.isSecret());
    put("secret");
    EXPECT_TRUE(pasteboard.isSecret());
    EXPECT_EQ(pasteboard.string(), QStringLiteral("password"));
    put("public");
    EXPECT_FALSE(pasteboard.isSecret());
    QGuiApplication::clipboard()->clear();
    EXPECT_FALSE(pasteboard.isSecret());
}

TEST(DesktopPasteboardTest, selectionOfTheMouseIsLeftAlone)
{
    DesktopPasteboard pasteboard;
    pasteboard.setString(QStringLiteral("clipboard"));
    const int before = pasteboard.changeCount();
    QGuiApplication::clipboard()->setText(QStringLiteral("selection"), QClipboard::Selection);
    EXPECT_EQ(pasteboard.string(), QStringLiteral("clipboard"));
    pasteboard.setString(QStringLiteral("clipboard again"));
    EXPECT_EQ(QGuiApplication::clipboard()->text(QClipboard::Selection), QStringLiteral("selection"));
    EXPECT_EQ(pasteboard.changeCount(), before + 1);
}

TEST(DesktopPasteboardTest, otherProgramsAndThisOneSeeEachOther)
{
    // Programs that own the clipboard need a window to be told of its loss.
    QWidget window;
    window.show();
    DesktopPasteboard pasteboard;
    pasteboard.setString(QStringLiteral("ours"));
    QProcess read;
    read.start(
        QStringLiteral("xclip"), {QStringLiteral("-selection"), QStringLiteral("clipboard"), QStringLiteral("-o")});
    ASSERT_TRUE(comesTrue([&] { return read.state() == QProcess::NotRunning; }));
    EXPECT_EQ(read.readAllStandardOutput(), "ours");

    const int before = pasteboard.changeCount();
    QProcess write;
    write.start(
        QStringLiteral("xclip"), {QStringLiteral("-selection"), QStringLiteral("clipboard"), QStringLiteral("-quiet")});
    write.write("theirs");
    write.closeWriteChannel();
    EXPECT_TRUE(comesTrue([&] { return pasteboard.changeCount() > before; }));
    EXPECT_TRUE(comesTrue([&] { return pasteboard.string() == QStringLiteral("theirs"); }));
    write.kill();
    write.waitForFinished();
}
