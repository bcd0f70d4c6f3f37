#include "platform/linux/DBusFileManager.h"

#include "platform/Conditions.h"

#include <QDBusConnection>
#include <QObject>
#include <QStringList>

#include <gtest/gtest.h>

#include <optional>

using namespace quillnest;

namespace
{
/// The desktop's program for files, as far as it is asked here.
class FileProgram : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    FileProgram() : m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("files")))
    {
        m_bus.registerObject(QStringLiteral("/org/freedesktop/FileManager1"), this, QDBusConnection::ExportAllSlots);
        EXPECT_TRUE(m_bus.registerService(QStringLiteral("org.freedesktop.FileManager1")));
    }
    ~FileProgram() override { QDBusConnection::disconnectFromBus(QStringLiteral("files")); }

    QStringList shown;

public Q_SLOTS:
    // The name is the bus's.
    void ShowItems(const QStringList &addresses, const QString &) { shown.append(addresses); }

private:
    QDBusConnection m_bus;
};

std::optional<bool> reveal(const QString &path)
{
    DBusFileManager files;
    std::optional<bool> answer;
    files.reveal(path, [&answer](bool shown) { answer = shown; });
    EXPECT_TRUE(comesTrue([&answer] { return answer.has_value(); }));
    return answer;
}
} // namespace

TEST(DBusFileManagerTest, theDesktopsProgramShowsTheFile)
{
    const FileProgram program;
    EXPECT_EQ(reveal(QStringLiteral("/home/a b/größe.apk")), true);
    EXPECT_EQ(program.shown, QStringList{QStringLiteral("file:///home/a%20b/gr%C3%B6%C3%9Fe.apk")});
}

TEST(DBusFileManagerTest, aDesktopWithoutOneIsSaidToHaveNone)
{
    // No program for folders is to be found either.
    const auto path = qgetenv("PATH");
    qputenv("PATH", "/nowhere");
    EXPECT_EQ(reveal(QStringLiteral("/home/moon.apk")), false);
    qputenv("PATH", path);
}

#include "DBusFileManagerTest.moc"
