#include "core/LibraryFormat.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimeZone>

#include <gtest/gtest.h>

using namespace quillnest;

namespace
{

MobileApp example()
{
    MobileApp app;
    app.id = QUuid::fromString(QStringLiteral("{0a1b2c3d-4e5f-6789-abcd-ef0123456789}"));
    app.name = QStringLiteral("Füchse \"1.2\"");
    app.platform = MobilePlatform::ios;
    app.sourcePath = QStringLiteral("/home/someone/Apps/a b.ipa");
    app.bundleIdentifier = QStringLiteral("org.example.app");
    app.addedAt = QDateTime(QDate(2001, 1, 2), QTime(0, 0, 1, 250), QTimeZone::utc());
    app.isFavorite = true;
    return app;
}

QJsonObject encoded(const MobileApp &app)
{
    return QJsonDocument::fromJson(LibraryFormat::encode({app})).array().at(0).toObject();
}

QByteArray list(std::initializer_list<QJsonObject> records)
{
    QJsonArray array;
    for (const auto &record : records)
        array.append(record);
    return QJsonDocument(array).toJson();
}

} // namespace

TEST(LibraryFormat, aRecordHasTheseKeysAndNoOthers)
{
    const QJsonObject expected{
        {QStringLiteral("id"), QStringLiteral("0A1B2C3D-4E5F-6789-ABCD-EF0123456789")},
        {QStringLiteral("name"), QStringLiteral("Füchse \"1.2\"")},
        {QStringLiteral("platform"), QStringLiteral("iOS / iPadOS")},
        {QStringLiteral("sourcePath"), QStringLiteral("/home/someone/Apps/a b.ipa")},
        {QStringLiteral("bundleIdentifier"), QStringLiteral("org.example.app")},
        {QStringLiteral("addedAt"), 86401.25},
        {QStringLiteral("isFavorite"), true},
    };
    EXPECT_EQ(encoded(example()), expected);
    auto app = example();
    app.platform = MobilePlatform::android;
    EXPECT_EQ(encoded(app).value(QStringLiteral("platform")), QStringLiteral("Android"));
}

TEST(LibraryFormat, anAbsentBundleIdentifierIsLeftOut)
{
    auto app = example();
    app.bundleIdentifier.reset();
    EXPECT_FALSE(encoded(app).contains(QStringLiteral("bundleIdentifier")));
    const auto read = LibraryFormat::decode(LibraryFormat::encode({app}));
    ASSERT_TRUE(read);
    EXPECT_EQ(*read, std::vector{app});
}

TEST(LibraryFormat, datesAreSecondsSinceTheBeginningOf2001InUtc)
{
    auto app = example();
    app.addedAt = QDateTime(QDate(2001, 1, 1), QTime(0, 0), Qt::UTC);
    EXPECT_EQ(encoded(app).value(QStringLiteral("addedAt")).toDouble(), 0);
    app.addedAt = QDateTime(QDate(2026, 6, 1), QTime(12, 0, 0, 5), Qt::UTC);
    EXPECT_EQ(encoded(app).value(QStringLiteral("addedAt")).toDouble(), 802008000.005);
    // Written in another zone it is the same moment.
    app.addedAt = QDateTime(QDate(2001, 1, 1), QTime(1, 0), Qt::OffsetFromUTC, 3600);
    EXPECT_EQ(encoded(app).value(QStringLiteral("addedAt")).toDouble(), 0);
    app.addedAt = QDateTime(QDate(2000, 12, 31), QTime(23, 59, 59, 500), Qt::UTC);
    EXPECT_EQ(encoded(app).value(QStringLiteral("addedAt")).toDouble(), -0.5);
}

TEST(LibraryFormat, whatIsWrittenIsReadInItsOrder)
{
    auto second = example();
    second.id = QUuid::createUuid();
    second.isFavorite = false;
    second.platform = MobilePlatform::android;
    const std::vector<MobileApp> apps{example(), second, example()};
    EXPECT_EQ(LibraryFormat::decode(LibraryFormat::encode(apps)), apps);
    EXPECT_EQ(LibraryFormat::decode(LibraryFormat::encode({})), std::vector<MobileApp>());
    EXPECT_EQ(LibraryFormat::encode({}), "[]");
}

TEST(LibraryFormat, aFileOfAnotherWriterIsRead)
{
    const QByteArray text = R"([{"isFavorite":false,"addedAt":0,"future":[1,2],"sourcePath":"\/Users\/a\/b.apk",
        "platform":"Android","id":"0A1B2C3D-4E5F-6789-ABCD-EF0123456789","name":"\u00e4"}])";
    const auto apps = LibraryFormat::decode(text);
    ASSERT_TRUE(apps);
    ASSERT_EQ(apps->size(), 1U);
    EXPECT_EQ(apps->at(0).name, QStringLiteral("ä"));
    EXPECT_EQ(apps->at(0).sourcePath, QStringLiteral("/Users/a/b.apk"));
    EXPECT_EQ(apps->at(0).bundleIdentifier, std::nullopt);
}

TEST(LibraryFormat, everyKeyButTheBundleIdentifierIsRequired)
{
    const auto good = encoded(example());
    ASSERT_TRUE(LibraryFormat::decode(list({good})));
    for (const auto &key : good.keys()) {
        auto record = good;
        record.remove(key);
        EXPECT_EQ(LibraryFormat::decode(list({record})).has_value(), key == QStringLiteral("bundleIdentifier"))
            << key.toStdString();
        record.insert(key, QJsonArray());
        EXPECT_FALSE(LibraryFormat::decode(list({record}))) << key.toStdString();
    }
}

TEST(LibraryFormat, oneBadRecordLosesTheWholeList)
{
    const auto good = encoded(example());
    auto bad = good;
    bad.insert(QStringLiteral("platform"), QStringLiteral("Windows Phone"));
    EXPECT_FALSE(LibraryFormat::decode(list({good, bad, good})));
    bad = good;
    bad.insert(QStringLiteral("id"), QStringLiteral("no id"));
    EXPECT_FALSE(LibraryFormat::decode(list({good, good, bad})));
    EXPECT_FALSE(LibraryFormat::decode("[1]"));
}

TEST(LibraryFormat, whatIsNoListIsNoLibrary)
{
    for (const auto *text : {"", "{}", "null", "[", "[{}", "text", "\xff\xfe"})
        EXPECT_FALSE(LibraryFormat::decode(text)) << text;
}

TEST(LibraryFormat, aNameThatAnEarlierVersionKeptWholeIsCut)
{
    MobileApp app;
    app.id = QUuid::createUuid();
    app.name = QStringLiteral("-1").repeated(50'000) + QChar(u'\n');
    app.addedAt = QDateTime(QDate(2026, 1, 1), QTime(0, 0), Qt::UTC);
    const auto apps = LibraryFormat::decode(LibraryFormat::encode({app}));
    ASSERT_TRUE(apps);
    EXPECT_EQ(apps->front().name, QStringLiteral("-1").repeated(100));
}
