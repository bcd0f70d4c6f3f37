#include "driver/TestDesktop.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QProcess>
#include <QTemporaryDir>

#include <sys/stat.h>

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <random>
#include <thread>

namespace quillnest::driver
{

namespace
{

/// What one run of the churn said before it was killed.
struct Life {
    QString loaded;
    /// The last operation that was finished; what was loaded if there was none.
    QString done;
    /// The operation under way, if there was one.
    std::optional<QString> doing;
    int operations = 0;
};

/// The same library without the ids of the entries that have just been made, which nobody can know beforehand.
QString withoutNewIds(const QString &library, const QString &expected)
{
    auto entries = library.split(QLatin1Char(';'));
    const auto wanted = expected.split(QLatin1Char(';'));
    for (qsizetype i = 0; i < entries.size() && i < wanted.size(); ++i) {
        if (wanted[i].startsWith(QStringLiteral("new|")))
            entries[i] = QStringLiteral("new|") + entries[i].section(QLatin1Char('|'), 1);
    }
    return entries.join(QLatin1Char(';'));
}

} // namespace

class LibraryKillTest : public ::testing::Test
{
protected:
    QString settingsPath() const { return m_folder.filePath(QStringLiteral("config/settings.json")); }

    /// What a loss of power leaves: names, and of the bytes those that were synced.
    void forgetWhatWasNotSynced() const
    {
        QFile journal(journalPath());
        ASSERT_TRUE(journal.open(QIODevice::ReadOnly));
        std::map<quint64, bool> isDirty;
        for (const auto &line : journal.readAll().split('\n'))
            isDirty[line.mid(6).toULongLong()] = line.startsWith("dirty ");
        journal.remove();
        int forgotten = 0;
        for (const auto &entry : QDir(QFileInfo(settingsPath()).path()).entryInfoList(QDir::Files | QDir::Hidden)) {
            struct stat status {
            };
            ASSERT_EQ(::stat(QFile::encodeName(entry.filePath()).constData(), &status), 0);
            if (isDirty[status.st_ino])
                forgotten += QFile::resize(entry.filePath(), 0);
        }
        m_forgotten += forgotten;
    }
    QString journalPath() const { return m_folder.filePath(QStringLiteral("journal")); }

    /// Lets the churn run until it has begun one more operation than that many, and kills it a moment later.
    Life runAndKill(unsigned seed, int operations, std::chrono::microseconds moment) const
    {
        QProcess churn;
        if (m_losesPower) {
            auto environment = QProcessEnvironment::systemEnvironment();
            environment.insert(QStringLiteral("LD_PRELOAD"), QStringLiteral(QUILLNEST_POWER_CUT));
            environment.insert(QStringLiteral("POWER_CUT_JOURNAL"), journalPath());
            churn.setProcessEnvironment(environment);
        }
        churn.start(QStringLiteral(QUILLNEST_LIBRARY_CHURN), {settingsPath(), m_folder.path(), QString::number(seed)});
        QByteArray said;
        waitFor(QStringLiteral("%1 operations").arg(operations), 30, [&] {
            churn.waitForReadyRead(100);
            said += churn.readAllStandardOutput();
            return said.count("\ndoing ") > operations;
        });
        std::this_thread::sleep_for(moment);
        churn.kill();
        churn.waitForFinished();
        said += churn.readAllStandardOutput();
        EXPECT_EQ(churn.exitStatus(), QProcess::CrashExit) << "it ended by itself";
        return read(said);
    }

    static Life read(const QByteArray &said)
    {
        Life life;
        auto lines = QString::fromUtf8(said).split(QLatin1Char('\n'));
        // A line that the kill cut short was not said.
        lines.removeLast();
        for (const auto &line : lines) {
            const auto word = line.section(QLatin1Char(' '), 0, 0);
            const auto library = line.section(QLatin1Char(' '), 1);
            if (word == QStringLiteral("doing")) {
                life.doing = library;
                continue;
            }
            life.doing.reset();
            life.done = library;
            if (word == QStringLiteral("loaded"))
                life.loaded = library;
            else
                ++life.operations;
        }
        return life;
    }

    void expectSettingsParse() const
    {
        QFile file(settingsPath());
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_TRUE(QJsonDocument::fromJson(file.readAll()).isObject());
        const auto damaged = QDir(QFileInfo(settingsPath()).path()).entryList({QStringLiteral("*damaged*")});
        EXPECT_TRUE(damaged.isEmpty()) << qPrintable(damaged.join(QLatin1Char(' ')));
    }

    QTemporaryDir m_folder;
    bool m_losesPower = false;
    mutable int m_forgotten = 0;
};

TEST_F(LibraryKillTest, aKillAtAnyMomentLeavesTheOldLibraryOrTheNew)
{
    const auto wish = qEnvironmentVariableIntValue("QUILLNEST_SEED");
    const auto seed = wish ? static_cast<unsigned>(wish) : std::random_device()();
    std::printf("QUILLNEST_SEED=%u\n", seed);
    std::mt19937 random(seed);
    const auto pick = [&random](int most) { return std::uniform_int_distribution<int>(0, most)(random); };

    int operations = 0;
    int kills = 0;
    int inTheMiddle = 0;
    std::optional<Life> last;
    while (operations < 1000 || kills < 200) {
        // Most while an operation is under way, the others between two.
        const auto moment = std::chrono::microseconds(pick(kills % 4 == 0 ? 6000 : 300));
        const auto life = runAndKill(static_cast<unsigned>(random()), kills == 0 ? 20 : pick(10), moment);
        if (last && life.loaded != last->done) {
            ASSERT_TRUE(last->doing) << "an operation that had finished is lost";
            ASSERT_EQ(withoutNewIds(life.loaded, *last->doing).toStdString(), last->doing->toStdString())
                << "neither the old library, which was:\n"
                << qPrintable(last->done);
            ++inTheMiddle;
        }
        ASSERT_NO_FATAL_FAILURE(expectSettingsParse());
        operations += life.operations;
        ++kills;
        last = life;
    }
    std::printf(
        "%d kills in %d operations, %d of them just before the word that one was done\n", kills, operations,
        inTheMiddle);
}

TEST_F(LibraryKillTest, aLossOfPowerAtAnyMomentLeavesTheOldLibraryOrTheNew)
{
    m_losesPower = true;
    std::mt19937 random(std::random_device{}());
    const auto pick = [&random](int most) { return std::uniform_int_distribution<int>(0, most)(random); };
    std::optional<Life> last;
    for (int cuts = 0; cuts < 60; ++cuts) {
        const auto life = runAndKill(static_cast<unsigned>(random()), pick(10), std::chrono::microseconds(pick(6000)));
        if (last && life.loaded != last->done) {
            ASSERT_TRUE(last->doing) << "an operation that had finished is lost";
            ASSERT_EQ(withoutNewIds(life.loaded, *last->doing).toStdString(), last->doing->toStdString());
        }
        ASSERT_NO_FATAL_FAILURE(forgetWhatWasNotSynced());
        last = life;
    }
    std::printf("%d files were forgotten\n", m_forgotten);
    EXPECT_GT(m_forgotten, 0) << "nothing was ever at stake";
}

} // namespace quillnest::driver
