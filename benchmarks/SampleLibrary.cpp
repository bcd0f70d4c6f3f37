#include "benchmarks/SampleLibrary.h"

#include <QStringList>

#include <random>

namespace quillnest::bench
{

namespace
{

const QStringList &words()
{
    static const QStringList list
        = QStringLiteral("Tide Ember Lantern Weather Notes Photo Camera Maps Chess Radio Podcast Bank Wallet Transit "
                         "Kitchen Garden Fitness Sleep Music Piano Puzzle Words Draw Paint Budget Calendar Mail Chat "
                         "News Reader Comics Café Über Élan Ñandú 天気 地図 Погода Ταξίδι Scanner Torch Compass Clock "
                         "Timer Translate Recipes Birds Stars Trails Surf Ski Golf Tennis Market Ticket Hotel Flights")
              .split(QLatin1Char(' '));
    return list;
}

} // namespace

std::vector<MobileApp> sampleLibrary(int count)
{
    std::mt19937 random(20010101);
    const auto below = [&random](qsizetype limit) {
        return static_cast<qsizetype>(random() % static_cast<std::mt19937::result_type>(limit));
    };
    const QDateTime first(QDate(2024, 1, 1), QTime(8, 0), Qt::UTC);
    std::vector<MobileApp> apps;
    apps.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        QStringList name;
        for (auto left = 1 + below(4); left > 0; --left)
            name.append(words().at(below(words().size())));
        switch (below(6)) {
        case 0:
            name.append(QStringLiteral("%1.%2.%3").arg(below(9)).arg(below(20)).arg(below(99)));
            break;
        case 1:
            name.append(QStringLiteral("(%1)").arg(i));
            break;
        case 2:
            name.first() = name.first().toLower();
            break;
        default:
            break;
        }
        MobileApp app;
        app.id = QUuid::fromRfc4122(QByteArray::number(i).rightJustified(16, '0'));
        app.name = name.join(QLatin1Char(' '));
        app.sourcePath = QStringLiteral("/home/user/Downloads/%1-%2.apk").arg(app.name.toLower()).arg(i);
        if (below(10) > 0)
            app.bundleIdentifier = QStringLiteral("org.example.app%1").arg(i);
        app.addedAt = first.addSecs(static_cast<qint64>(i) * 3600);
        app.isFavorite = below(10) == 0;
        apps.push_back(std::move(app));
    }
    return apps;
}

} // namespace quillnest::bench
