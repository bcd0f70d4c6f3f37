#include "core/StoredLibrary.h"

#include "core/CoreSettings.h"
#include "core/LibraryFormat.h"
#include "fakes/FakePlatform.h"

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{
class StoredLibraryTest : public ::testing::Test
{
protected:
    static MobileApp app(const QString &name)
    {
        MobileApp made;
        made.id = QUuid::createUuid();
        made.name = name;
        made.sourcePath = QStringLiteral("/apps/%1.apk").arg(name);
        made.addedAt = QDateTime::fromMSecsSinceEpoch(0);
        return made;
    }

    StoredLibrary open() { return StoredLibrary(fakes.settings, log, status); }

    QByteArray stored() const { return fakes.settings->value(CoreSettings::apps.key()).toByteArray(); }
    QVariant kept(int number = 1) const
    {
        return fakes.settings->value(CoreSettings::unreadableApps.key(QString::number(number)));
    }

    FakePlatform fakes = fakePlatform();
    std::shared_ptr<QuillnestLog> log = std::make_shared<QuillnestLog>(
        fakes.clock, fakes.platform.folders.logs, QStringLiteral("quillnest.log"), false);
    StatusLine status;
};
} // namespace

TEST_F(StoredLibraryTest, whatWasReadCountsThoughItCanNotBeWrittenAgain)
{
    open().append(app(QStringLiteral("Moon")));
    const auto before = stored();
    fakes.settings->failure = QStringLiteral("No space left on device");
    auto library = open();
    ASSERT_EQ(library.apps().size(), 1U);
    EXPECT_FALSE(library.append(app(QStringLiteral("Star"))));
    EXPECT_EQ(library.apps().size(), 1U);
    EXPECT_EQ(status.text(), QStringLiteral("Could not save the library: No space left on device"));
    fakes.settings->failure.reset();
    EXPECT_EQ(stored(), before);
    EXPECT_TRUE(library.append(app(QStringLiteral("Star"))));
    EXPECT_EQ(LibraryFormat::decode(stored())->size(), 2U) << "the app from before is still in it";
}

TEST_F(StoredLibraryTest, bytesThatCanNotBeReadAreKeptAsideBeforeAnySave)
{
    const QByteArray bad = "[{\"name\": \"Moon\"";
    fakes.settings->setValue(CoreSettings::apps.key(), bad);
    auto library = open();
    EXPECT_TRUE(library.apps().empty());
    EXPECT_EQ(stored(), bad) << "until the next save";
    EXPECT_EQ(kept(), QVariant(bad));
    EXPECT_EQ(log->tail(1), QStringLiteral("library unreadable, kept aside as Quillnest.apps.unreadable.1"));
    library.append(app(QStringLiteral("Star")));
    EXPECT_EQ(kept(), QVariant(bad));
    EXPECT_EQ(LibraryFormat::decode(stored())->size(), 1U);
}

TEST_F(StoredLibraryTest, aChangeIsAnnouncedOnceAndOneThatCouldNotBeSavedNotAtAll)
{
    auto library = open();
    int changes = 0;
    QObject::connect(&library, &StoredLibrary::changed, &library, [&changes] { ++changes; });
    const auto moon = app(QStringLiteral("Moon"));
    library.append(moon);
    EXPECT_EQ(changes, 1);
    library.change(moon.id, [](MobileApp &entry) { entry.isFavorite = true; });
    EXPECT_EQ(changes, 2);
    library.change(QUuid::createUuid(), [](MobileApp &entry) { entry.isFavorite = true; });
    EXPECT_EQ(changes, 2) << "an entry that isn't there";
    fakes.settings->failure = QStringLiteral("full");
    library.erase(moon.id);
    EXPECT_EQ(changes, 2);
    EXPECT_EQ(library.apps().size(), 1U);
}

TEST_F(StoredLibraryTest, accentsOfTheirOwnAndThoseOfALetterAreTheSame)
{
    const auto composed = QStringLiteral("Caf\u00e9");
    const auto decomposed = QStringLiteral("Cafe\u0301");
    EXPECT_TRUE(containsText(composed, decomposed));
    EXPECT_TRUE(containsText(decomposed, composed));
    EXPECT_TRUE(containsText(decomposed, QStringLiteral("F\u00c9")));
    EXPECT_FALSE(containsText(composed, QString()));
    auto library = open();
    library.append(app(decomposed + u'b'));
    library.append(app(composed + u'a'));
    EXPECT_EQ(library.sorted(StoredLibrary::Order::byName).front().name, composed + u'a');
}

TEST_F(StoredLibraryTest, withoutRoomToKeepThemAsideUnreadableBytesAreNotOverwrittenEither)
{
    const QByteArray bad = "no library";
    fakes.settings->setValue(CoreSettings::apps.key(), bad);
    fakes.settings->failure = QStringLiteral("No space left on device");
    auto library = open();
    EXPECT_FALSE(library.append(app(QStringLiteral("Moon"))));
    EXPECT_EQ(stored(), bad);
    fakes.settings->failure.reset();
    EXPECT_TRUE(library.append(app(QStringLiteral("Moon"))));
    EXPECT_EQ(kept(), QVariant(bad));
    EXPECT_EQ(LibraryFormat::decode(stored())->size(), 1U);
}

TEST_F(StoredLibraryTest, aValueOfAnotherTypeIsKeptAsideBesideEarlierOnes)
{
    fakes.settings->setValue(CoreSettings::apps.key(), QByteArray("no library"));
    open();
    fakes.settings->setValue(CoreSettings::apps.key(), QStringLiteral("text"));
    open();
    open();
    EXPECT_EQ(kept(1), QVariant(QByteArray("no library")));
    EXPECT_EQ(kept(2), QVariant(QStringLiteral("text")));
    EXPECT_EQ(kept(3), QVariant()) << "the same thing is kept once";
}
