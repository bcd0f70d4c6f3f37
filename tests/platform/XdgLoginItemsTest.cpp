#include "platform/linux/XdgLoginItems.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace quillnest;
using Status = LoginItems::Status;

namespace
{

class XdgLoginItemsTest : public ::testing::Test
{
protected:
    QTemporaryDir config;
    QString path = config.filePath(QStringLiteral("autostart/app.quillnest.Quillnest.desktop"));
    XdgLoginItems items{config.path(), QStringLiteral("/opt/quill nest/$bin/100%/\"quillnest\"")};

    QByteArray entry() const
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
};

} // namespace

TEST_F(XdgLoginItemsTest, onAndOff)
{
    EXPECT_EQ(items.status(), Status::notRegistered);
    EXPECT_EQ(items.set(false), std::nullopt);
    EXPECT_EQ(items.set(true), std::nullopt);
    EXPECT_EQ(items.status(), Status::enabled);
    EXPECT_EQ(items.set(false), std::nullopt);
    EXPECT_EQ(items.status(), Status::notRegistered);
    EXPECT_FALSE(QFile::exists(path));
}

TEST_F(XdgLoginItemsTest, whatTheUserSwitchedOffInTheDesktopsSettingsNeedsApproval)
{
    for (const auto *line : {"Hidden=true", "X-GNOME-Autostart-enabled = false"}) {
        items.set(true);
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::Append));
        file.write(line);
        file.write("\n");
        file.close();
        EXPECT_EQ(items.status(), Status::requiresApproval) << line;
        EXPECT_EQ(items.set(true), std::nullopt);
        EXPECT_EQ(items.status(), Status::enabled);
    }
}

TEST_F(XdgLoginItemsTest, aPathWithSpecialCharactersIsOneWord)
{
    items.set(true);
    // One level of escapes for the file's values, one for the quoted word, and a doubled percent sign.
    EXPECT_TRUE(entry().contains("\nExec=\"/opt/quill nest/\\\\$bin/100%%/\\\\\"quillnest\\\\\"\"\n"))
        << entry().toStdString();
}

TEST_F(XdgLoginItemsTest, aFolderThatCannotBeMadeIsTold)
{
    QFile obstacle(config.filePath(QStringLiteral("autostart")));
    ASSERT_TRUE(obstacle.open(QIODevice::WriteOnly));
    const auto failure = items.set(true);
    ASSERT_TRUE(failure);
    EXPECT_FALSE(failure->isEmpty());
    EXPECT_EQ(items.status(), Status::notRegistered);
}
