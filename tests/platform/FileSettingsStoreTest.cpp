#include "platform/posix/FileSettingsStore.h"

#include "platform/Conditions.h"

#include <QFileSystemWatcher>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QThread>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <csignal>
#include <random>

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{
class FileSettingsStoreTest : public ::testing::Test
{
protected:
    std::unique_ptr<FileSettingsStore> store() const { return std::make_unique<FileSettingsStore>(path); }
    QByteArray fileBytes() const
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    void writeFile(const QByteArray &bytes) const
    {
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("config/Quillnest/settings.json"));
    const QString key = QStringLiteral("key");
};

/// While it lives no file of this process can grow.
class NoRoom
{
public:
    NoRoom()
    {
        ::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit none{0, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &none);
    }
    ~NoRoom() { ::setrlimit(RLIMIT_FSIZE, &m_before); }
    NoRoom(const NoRoom &) = delete;
    NoRoom &operator=(const NoRoom &) = delete;

private:
    rlimit m_before{};
};

/// Runs `work` in a process of its own, which must not touch the event loop, and gives its id.
template <typename Work> pid_t inChild(Work work)
{
    const pid_t pid = ::fork();
    if (pid == 0) {
        work();
        ::_exit(0);
    }
    return pid;
}
} // namespace

TEST_F(FileSettingsStoreTest, absentKey)
{
    const auto settings = store();
    EXPECT_FALSE(settings->value(key).isValid());
    EXPECT_TRUE(settings->keys().isEmpty());
    EXPECT_FALSE(QFile::exists(path)) << "reading writes nothing";
    settings->remove(key);
    EXPECT_FALSE(settings->value(key).isValid());
}

TEST_F(FileSettingsStoreTest, everyTypeComesBackAsWhatWasWritten)
{
    const QVariantMap map{
        {QStringLiteral("a"), true},
        {QStringLiteral("b"), QByteArray("\0\xff", 2)},
        {QStringLiteral("c"), QVariantList{QStringLiteral("x"), qint64{5}}}};
    const std::vector<std::pair<QString, QVariant>> values{
        {QStringLiteral("true"), true},
        {QStringLiteral("false"), false},
        {QStringLiteral("text"), QStringLiteral("gr\u00f6\u00dfe \U0001F44D \"quoted\"\n")},
        {QStringLiteral("empty text"), QStringLiteral("")},
        {QStringLiteral("fraction"), 0.1},
        {QStringLiteral("negative"), -2.5},
        {QStringLiteral("big"), qint64{9007199254740993}},
        {QStringLiteral("bytes"), QByteArray("\0\1\2\xff\xfe", 5)},
        {QStringLiteral("no bytes"), QByteArray("")},
        {QStringLiteral("list"), QVariantList{true, QStringLiteral("a"), 1.5, QByteArray("b"), QVariantList{}}},
        {QStringLiteral("map"), map},
        {QStringLiteral("key.with/odd \"signs\" \u00fc"), QStringLiteral("v")},
    };
    {
        const auto settings = store();
        for (const auto &[name, value] : values)
            settings->setValue(name, value);
        for (const auto &[name, value] : values) {
            EXPECT_EQ(settings->value(name), value) << name.toStdString();
            EXPECT_EQ(settings->value(name).typeId(), value.typeId()) << name.toStdString();
        }
    }
    const auto again = store();
    for (const auto &[name, value] : values) {
        EXPECT_EQ(again->value(name), value) << name.toStdString();
        EXPECT_EQ(again->value(name).typeId(), value.typeId()) << name.toStdString();
    }
    EXPECT_EQ(again->keys().size(), static_cast<qsizetype>(values.size()));
}

TEST_F(FileSettingsStoreTest, wholeNumbersAreNumbersWhateverTheirType)
{
    const auto settings = store();
    settings->setValue(key, 7);
    EXPECT_EQ(settings->value(key).toDouble(), 7.0);
    settings->setValue(key, 8.0);
    EXPECT_EQ(settings->value(key).toLongLong(), 8);
    EXPECT_NE(settings->value(key).typeId(), QMetaType::Bool);
}

TEST_F(FileSettingsStoreTest, textListsBecomeLists)
{
    const auto settings = store();
    settings->setValue(key, QStringList{QStringLiteral("a"), QStringLiteral("b")});
    EXPECT_EQ(settings->value(key), QVariant(QVariantList{QStringLiteral("a"), QStringLiteral("b")}));
}

TEST_F(FileSettingsStoreTest, equalValuesOfTwoTypesAreTwoValues)
{
    const auto settings = store();
    settings->setValue(key, true);
    settings->setValue(key, 1);
    EXPECT_EQ(settings->value(key).typeId(), QMetaType::LongLong);
    settings->setValue(key, true);
    EXPECT_EQ(settings->value(key).typeId(), QMetaType::Bool);
    settings->setValue(key, QStringLiteral("true"));
    EXPECT_EQ(settings->value(key).typeId(), QMetaType::QString);
    settings->setValue(key, QByteArray("true"));
    EXPECT_EQ(settings->value(key).typeId(), QMetaType::QByteArray);
    settings->setValue(key, QVariantList{true});
    settings->setValue(key, QVariantList{1});
    EXPECT_EQ(settings->value(key).toList().at(0).typeId(), QMetaType::LongLong);
    EXPECT_EQ(store()->value(key).toList().at(0).typeId(), QMetaType::LongLong);
}

TEST_F(FileSettingsStoreTest, removedKeyIsAbsentAtTheNextStart)
{
    store()->setValue(key, 1.5);
    store()->remove(key);
    EXPECT_FALSE(store()->value(key).isValid());
    EXPECT_TRUE(store()->keys().isEmpty());
}

TEST_F(FileSettingsStoreTest, changedIsEmittedForEachChangeAndForNothingElse)
{
    const auto settings = store();
    QStringList changes;
    QObject::connect(
        settings.get(), &SettingsStore::changed, [&changes](const QString &name) { changes.append(name); });
    settings->setValue(key, 1.5);
    settings->setValue(key, 1.5);
    settings->setValue(QStringLiteral("other"), QStringLiteral("x"));
    settings->remove(key);
    settings->remove(key);
    EXPECT_EQ(changes, (QStringList{key, QStringLiteral("other"), key}));
}

TEST_F(FileSettingsStoreTest, writeOfAnotherThreadIsAnnouncedOnTheMainThread)
{
    const auto settings = store();
    QThread *where = nullptr;
    QObject::connect(settings.get(), &SettingsStore::changed, [&where] { where = QThread::currentThread(); });
    std::thread([&] { settings->setValue(key, true); }).join();
    EXPECT_EQ(settings->value(key), QVariant(true));
    EXPECT_TRUE(comesTrue([&] { return where != nullptr; }));
    EXPECT_EQ(where, QThread::currentThread());
}

TEST_F(FileSettingsStoreTest, twoStoresOfOneFileSeeEachOther)
{
    const auto one = store();
    const auto two = store();
    QStringList changes;
    QObject::connect(two.get(), &SettingsStore::changed, [&changes](const QString &name) { changes.append(name); });
    one->setValue(key, QStringLiteral("first"));
    EXPECT_TRUE(comesTrue([&] { return two->value(key) == QStringLiteral("first"); }));
    EXPECT_TRUE(comesTrue([&] { return changes == QStringList{key}; }));
    two->setValue(QStringLiteral("back"), true);
    EXPECT_TRUE(comesTrue([&] { return one->value(QStringLiteral("back")) == QVariant(true); }));
    EXPECT_EQ(one->value(key), QStringLiteral("first"));
    // And again, after the file has been replaced more than once.
    one->setValue(key, QStringLiteral("second"));
    EXPECT_TRUE(comesTrue([&] { return two->value(key) == QStringLiteral("second"); }));
    one->remove(key);
    EXPECT_TRUE(comesTrue([&] { return !two->value(key).isValid(); }));
}

TEST_F(FileSettingsStoreTest, writeKeepsWhatAnotherStoreWroteUnseen)
{
    const auto one = store();
    const auto two = store();
    one->setValue(QStringLiteral("one"), 1.5);
    // Without an event loop in between.
    two->setValue(QStringLiteral("two"), 2.5);
    one->setValue(QStringLiteral("three"), 3.5);
    EXPECT_EQ(store()->keys(), (QStringList{QStringLiteral("one"), QStringLiteral("three"), QStringLiteral("two")}));
}

TEST_F(FileSettingsStoreTest, quickWritesOfTheSameSizeAreAllSeen)
{
    // A file may get the number, the size and, within one tick of the file system's clock, the time of the one that it
    // replaced two writes ago.
    const auto one = store();
    const auto two = store();
    for (int i = 0; i < 300; ++i) {
        one->setValue(key, QStringLiteral("a%1").arg(i % 10));
        two->setValue(key, QStringLiteral("b%1").arg(i % 10));
        two->setValue(key, QStringLiteral("c%1").arg(i % 10));
        one->setValue(QStringLiteral("other"), QStringLiteral("%1").arg(i % 10));
        ASSERT_EQ(one->value(key), QStringLiteral("c%1").arg(i % 10)) << i;
        ASSERT_EQ(store()->value(key), QStringLiteral("c%1").arg(i % 10)) << i;
    }
}

TEST_F(FileSettingsStoreTest, fileThatAPersonEdited)
{
    const auto settings = store();
    settings->setValue(key, true);
    QStringList changes;
    QObject::connect(
        settings.get(), &SettingsStore::changed, [&changes](const QString &name) { changes.append(name); });
    writeFile("{ \"key\": false, \"mine\": {\"$data\": \"AAE=\"} }");
    EXPECT_TRUE(comesTrue([&] { return changes.size() == 2; }));
    EXPECT_EQ(settings->value(key), QVariant(false));
    EXPECT_EQ(settings->value(QStringLiteral("mine")), QVariant(QByteArray("\0\1", 2)));
}

TEST_F(FileSettingsStoreTest, fileThatWasDeleted)
{
    const auto settings = store();
    settings->setValue(key, true);
    QStringList changes;
    QObject::connect(
        settings.get(), &SettingsStore::changed, [&changes](const QString &name) { changes.append(name); });
    ASSERT_TRUE(QFile::remove(path));
    EXPECT_TRUE(comesTrue([&] { return changes == QStringList{key}; }));
    EXPECT_FALSE(settings->value(key).isValid());
    EXPECT_EQ(settings->damagedFile(), std::nullopt);
    settings->setValue(key, 2.5);
    EXPECT_EQ(store()->value(key), QVariant(2.5));
}

TEST_F(FileSettingsStoreTest, damagedFileIsSetAsideAndTheStoreStartsEmpty)
{
    for (const QByteArray damaged : {"", "{\"key\": tr", "[1, 2]", "\xff\xfe garbage"}) {
        writeFile(damaged);
        const auto settings = store();
        EXPECT_TRUE(settings->keys().isEmpty());
        ASSERT_TRUE(settings->damagedFile()) << damaged.toStdString();
        EXPECT_EQ(QFileInfo(*settings->damagedFile()).path(), QFileInfo(path).path());
        QFile aside(*settings->damagedFile());
        ASSERT_TRUE(aside.open(QIODevice::ReadOnly));
        EXPECT_EQ(aside.readAll(), damaged);
        settings->setValue(key, true);
        EXPECT_EQ(store()->value(key), QVariant(true));
        EXPECT_EQ(store()->damagedFile(), std::nullopt);
        QFile::remove(path);
    }
}

TEST_F(FileSettingsStoreTest, whatWasWrittenSinceMayBeLostWithThePowerButNotWhatIsPrecious)
{
    const QByteArray library("many apps");
    store()->setValue(QStringLiteral("library"), library);
    store()->setValue(key, 5);
    // The name is on the disk and the bytes aren't.
    ASSERT_TRUE(QFile::resize(path, 0));
    const auto settings = store();
    EXPECT_EQ(settings->value(QStringLiteral("library")), QVariant(library));
    EXPECT_EQ(settings->value(key), QVariant());
    EXPECT_TRUE(settings->damagedFile());
    // It is in its place again, for other processes, too.
    EXPECT_EQ(store()->value(QStringLiteral("library")), QVariant(library));
    settings->setValue(key, 6);
    ASSERT_TRUE(QFile::resize(path, 0));
    EXPECT_EQ(store()->value(QStringLiteral("library")), QVariant(library));
}

TEST_F(FileSettingsStoreTest, aFileThatWasSetAsideIsWrittenAnewEvenIfNothingChanges)
{
    const auto settings = store();
    settings->setValue(key, 5);
    writeFile("garbage");
    settings->setValue(key, 5);
    EXPECT_EQ(store()->value(key).toInt(), 5);
}

TEST_F(FileSettingsStoreTest, whatWasSyncedInTheBackgroundIsSafeAsWell)
{
    const auto settings = store();
    settings->setValue(key, 5);
    const auto safe = path + QStringLiteral(".safe");
    EXPECT_TRUE(comesTrue([&] { return QFile::exists(safe); }));
    settings->setValue(key, 6);
    ASSERT_TRUE(QFile::resize(path, 0));
    EXPECT_EQ(store()->value(key).toInt(), 5);
    // Nothing but the two files and the lock is left lying about.
    const auto names = QDir(QFileInfo(path).path()).entryList({QStringLiteral("*.safe-*")}, QDir::Files | QDir::Hidden);
    EXPECT_TRUE(names.isEmpty());
}

TEST_F(FileSettingsStoreTest, fileThatWasDamagedWhileTheProgramRuns)
{
    const auto settings = store();
    settings->setValue(key, true);
    writeFile("{ broken");
    settings->setValue(QStringLiteral("other"), true);
    EXPECT_TRUE(settings->damagedFile());
    EXPECT_EQ(store()->value(QStringLiteral("other")), QVariant(true));
    EXPECT_EQ(store()->value(key), QVariant(true)) << "what the program knew is not lost";
    EXPECT_TRUE(QJsonDocument::fromJson(fileBytes()).isObject());
}

TEST_F(FileSettingsStoreTest, damageThatIsNoticedLaterIsAnnounced)
{
    const auto settings = store();
    settings->setValue(key, true);
    QStringList announced;
    QObject::connect(
        settings.get(), &SettingsStore::setAside, [&announced](const QString &aside) { announced.append(aside); });
    writeFile("{ broken");
    settings->setValue(QStringLiteral("other"), true);
    EXPECT_EQ(announced, QStringList{settings->damagedFile().value_or(QString())});
    settings->setValue(QStringLiteral("other"), false);
    EXPECT_EQ(announced.size(), 1);
}

TEST_F(FileSettingsStoreTest, fileThatCannotBeReadIsNotReplaced)
{
    // A link to itself can be opened by nobody, whoever runs this.
    QDir().mkpath(QFileInfo(path).path());
    ASSERT_TRUE(QFile::link(path, path));
    const auto settings = store();
    EXPECT_TRUE(settings->keys().isEmpty());
    const auto failure = settings->setValue(key, true);
    ASSERT_TRUE(failure);
    EXPECT_FALSE(failure->isEmpty());
    EXPECT_TRUE(QFileInfo(path).isSymLink());
    EXPECT_FALSE(settings->value(key).isValid());
    QFile::remove(path);
    EXPECT_EQ(settings->setValue(key, true), std::nullopt);
    EXPECT_EQ(store()->value(key), QVariant(true));
}

TEST_F(FileSettingsStoreTest, diskThatIsFullKeepsTheOldValueOnItAndHere)
{
    const auto settings = store();
    settings->setValue(key, 1);
    const auto before = fileBytes();
    QStringList changes;
    QObject::connect(
        settings.get(), &SettingsStore::changed, [&changes](const QString &name) { changes.append(name); });
    {
        // No file can grow, as on a disk that is full.
        const NoRoom noRoom;
        EXPECT_EQ(settings->setValue(key, 2), QStringLiteral("File too large"));
        EXPECT_EQ(settings->value(key), QVariant(1));
        EXPECT_EQ(fileBytes(), before);
        EXPECT_TRUE(changes.isEmpty());
        EXPECT_EQ(settings->remove(key), QStringLiteral("File too large"));
        EXPECT_EQ(settings->value(key), QVariant(1));
    }
    EXPECT_EQ(settings->setValue(key, 2), std::nullopt) << "as soon as there is space again";
    EXPECT_EQ(store()->value(key), QVariant(2));
}

TEST_F(FileSettingsStoreTest, nothingIsWrittenThroughWhatLiesInTheWay)
{
    const auto settings = store();
    const auto elsewhere = folder.filePath(QStringLiteral("elsewhere"));
    QFile other(elsewhere);
    ASSERT_TRUE(other.open(QIODevice::WriteOnly) && other.write("precious") == 8);
    other.close();
    ASSERT_TRUE(QFile::link(elsewhere, path + QStringLiteral(".new")));
    EXPECT_EQ(settings->setValue(key, 1), std::nullopt);
    ASSERT_EQ(::mkfifo(QFile::encodeName(path + QStringLiteral(".new")).constData(), 0600), 0);
    EXPECT_EQ(settings->setValue(key, 2), std::nullopt);
    ASSERT_TRUE(other.open(QIODevice::ReadOnly));
    EXPECT_EQ(other.readAll(), "precious");
    EXPECT_FALSE(QFileInfo(path).isSymLink());
    EXPECT_EQ(store()->value(key).toInt(), 2);
}

TEST_F(FileSettingsStoreTest, whatIsNoFileHoldsNobodyUpAndStays)
{
    store()->setValue(key, 1);
    QFile::remove(path);
    ASSERT_EQ(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    const auto settings = store();
    EXPECT_EQ(settings->value(key), QVariant());
    EXPECT_TRUE(settings->setValue(key, 2));
    struct stat status {
    };
    EXPECT_EQ(::stat(QFile::encodeName(path).constData(), &status), 0);
    EXPECT_TRUE(S_ISFIFO(status.st_mode));
}

TEST_F(FileSettingsStoreTest, aLockThatIsNeverLetGoIsTold)
{
    const auto settings = store();
    const int held = ::open(QFile::encodeName(path + QStringLiteral(".lock")).constData(), O_RDWR | O_CREAT, 0600);
    ASSERT_EQ(::flock(held, LOCK_EX), 0);
    EXPECT_EQ(
        settings->setValue(key, 1), QStringLiteral("The settings are locked by another program that stands still"));
    ::close(held);
    EXPECT_EQ(settings->setValue(key, 1), std::nullopt);
}

TEST_F(FileSettingsStoreTest, editorThatIsInTheMiddleOfWritingIsLeftAlone)
{
    const auto settings = store();
    settings->setValue(key, true);
    QStringList changes;
    QObject::connect(
        settings.get(), &SettingsStore::changed, [&changes](const QString &name) { changes.append(name); });
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    file.write("{ \"key\": fal");
    // Another file in the folder makes the store look, and its own change tells when it has.
    QFileSystemWatcher watcher({QFileInfo(path).path()});
    bool looked = false;
    QObject::connect(&watcher, &QFileSystemWatcher::directoryChanged, [&looked] { looked = true; });
    QFile neighbour(path + QStringLiteral(".neighbour"));
    ASSERT_TRUE(neighbour.open(QIODevice::WriteOnly));
    ASSERT_TRUE(comesTrue([&] { return looked; }));
    file.write("se }");
    file.close();
    EXPECT_TRUE(comesTrue([&] { return changes == QStringList{key}; }));
    EXPECT_EQ(settings->value(key), QVariant(false));
    EXPECT_EQ(settings->damagedFile(), std::nullopt);
}

TEST_F(FileSettingsStoreTest, fileIsTheUsersAlone)
{
    store()->setValue(key, true);
    struct stat status {
    };
    ASSERT_EQ(::stat(QFile::encodeName(path).constData(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
}

TEST_F(FileSettingsStoreTest, writersOfSeveralThreadsLoseNothing)
{
    const auto settings = store();
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < 50; ++i)
                settings->setValue(QStringLiteral("%1-%2").arg(thread).arg(i), i);
        });
    }
    for (auto &thread : threads)
        thread.join();
    EXPECT_EQ(store()->keys().size(), 200);
}

TEST_F(FileSettingsStoreTest, writersOfSeveralProcessesLoseNothing)
{
    store()->setValue(key, true);
    std::vector<pid_t> children;
    for (int child = 0; child < 3; ++child) {
        children.push_back(inChild([&, child] {
            const auto settings = store();
            for (int i = 0; i < 60; ++i)
                settings->setValue(QStringLiteral("%1-%2").arg(child).arg(i), i);
        }));
    }
    for (const auto pid : children) {
        int status = -1;
        ASSERT_EQ(::waitpid(pid, &status, 0), pid);
        EXPECT_EQ(status, 0);
    }
    EXPECT_EQ(store()->keys().size(), 1 + 3 * 60);
}

TEST_F(FileSettingsStoreTest, storesOfOneFileOnSeveralThreadsLoseNothing)
{
    // Each thread writes through a store of its own while the main thread's event loop reads what the others wrote.
    std::vector<std::unique_ptr<FileSettingsStore>> stores;
    for (int i = 0; i < 3; ++i)
        stores.push_back(store());
    std::atomic_int running = 3;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 3; ++thread) {
        threads.emplace_back([&, thread] {
            for (int i = 0; i < 60; ++i)
                stores[static_cast<std::size_t>(thread)]->setValue(QStringLiteral("%1-%2").arg(thread).arg(i), i);
            --running;
        });
    }
    EXPECT_TRUE(comesTrue([&running] { return running == 0; }));
    for (auto &thread : threads)
        thread.join();
    EXPECT_EQ(store()->keys().size(), 180);
    for (const auto &each : stores)
        EXPECT_TRUE(comesTrue([&each] { return each->keys().size() == 180; }));
}

TEST_F(FileSettingsStoreTest, killAtAnyMomentLeavesAWholeFile)
{
    std::mt19937 random(7);
    std::uniform_int_distribution<int> microseconds(0, 4000);
    store()->setValue(QStringLiteral("precious"), QStringLiteral("kept"));
    for (int round = 0; round < 60; ++round) {
        const auto pid = inChild([&] {
            const auto settings = store();
            for (int i = 0;; ++i)
                settings->setValue(key, QString(i % 5000, QLatin1Char('x')));
        });
        // The moment is what varies; nothing is waited for.
        ::usleep(static_cast<useconds_t>(microseconds(random)));
        ::kill(pid, SIGKILL);
        ASSERT_EQ(::waitpid(pid, nullptr, 0), pid);
        const auto document = QJsonDocument::fromJson(fileBytes());
        ASSERT_TRUE(document.isObject()) << fileBytes().toStdString();
        ASSERT_EQ(document.object().value(QStringLiteral("precious")).toString(), QStringLiteral("kept"));
    }
    // The lock of a killed process is free.
    store()->setValue(key, true);
    EXPECT_EQ(store()->value(key), QVariant(true));
    EXPECT_EQ(store()->damagedFile(), std::nullopt);
}

TEST_F(FileSettingsStoreTest, aLongerLeftOverOfAKilledWriteLeavesNothingInTheFile)
{
    store()->setValue(QStringLiteral("first"), 1);
    QFile leftOver(path + QStringLiteral(".new"));
    ASSERT_TRUE(leftOver.open(QIODevice::WriteOnly));
    leftOver.write(QByteArray(100'000, 'x'));
    leftOver.close();
    EXPECT_EQ(store()->setValue(key, true), std::nullopt);
    EXPECT_TRUE(QJsonDocument::fromJson(fileBytes()).isObject());
    EXPECT_EQ(store()->value(key), QVariant(true));
    EXPECT_EQ(store()->damagedFile(), std::nullopt);
}

TEST_F(FileSettingsStoreTest, returnedWriteSurvivesAKill)
{
    for (int round = 0; round < 10; ++round) {
        const auto pid = inChild([&] {
            store()->setValue(key, round);
            ::kill(::getpid(), SIGKILL);
        });
        ASSERT_EQ(::waitpid(pid, nullptr, 0), pid);
        EXPECT_EQ(store()->value(key).toInt(), round);
    }
}
