#include "platform/Files.h"

#include <QTemporaryDir>

#include <system_error>

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{
class FilesTest : public ::testing::Test
{
protected:
    QString write(const char *name) const
    {
        QFile file(folder.filePath(QLatin1String(name)));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        return file.fileName();
    }

    const QTemporaryDir folder;
};
} // namespace

TEST_F(FilesTest, onlyAFileThatMayBeRunIsExecutable)
{
    const auto path = write("tool");
    EXPECT_FALSE(isExecutableFile(path));
    QFile::setPermissions(path, QFile::permissions(path) | QFileDevice::ExeOwner | QFileDevice::ExeUser);
    EXPECT_TRUE(isExecutableFile(path));
    EXPECT_FALSE(isExecutableFile(folder.path())) << "a folder";
    EXPECT_FALSE(isExecutableFile(folder.filePath(QStringLiteral("none"))));
}

TEST_F(FilesTest, aFileStaysTheSameUnderAnotherNameAndItsSuccessorIsAnother)
{
    const auto path = write("one");
    QFile open(path);
    ASSERT_TRUE(open.open(QIODevice::ReadOnly));
    EXPECT_TRUE(identityOf(path));
    EXPECT_EQ(identityOf(open), identityOf(path));
    const auto renamed = folder.filePath(QStringLiteral("two"));
    ASSERT_TRUE(QFile::rename(path, renamed));
    EXPECT_EQ(identityOf(open), identityOf(renamed));
    EXPECT_EQ(identityOf(path), std::nullopt);
    write("one");
    EXPECT_NE(identityOf(open), identityOf(path));
}

TEST_F(FilesTest, whatCannotBeSynchronizedIsAnError)
{
    QFile file(folder.filePath(QStringLiteral("file")));
    EXPECT_THROW(synchronize(file), std::system_error) << "not open";
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_NO_THROW(synchronize(file));
}
