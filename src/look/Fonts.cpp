#include "look/Fonts.h"

#include <QFontDatabase>
#include <QGuiApplication>

#include <cmath>

namespace quillnest
{

QFont interfaceFont(int points, QFont::Weight weight)
{
    static const bool hasInter = QFontDatabase::hasFamily(QStringLiteral("Inter"));
    QFont font = hasInter ? QFont(QStringLiteral("Inter")) : QGuiApplication::font();
    // Device-independent pixels are what points are on the screens that the layout was made for.
    font.setPixelSize(points);
    font.setWeight(weight);
    return font;
}

QFont displayFont(int points, QFont::Weight weight)
{
    static const bool hasDisplay = QFontDatabase::hasFamily(QStringLiteral("Inter Display"));
    auto font = interfaceFont(points, weight);
    if (hasDisplay)
        font.setFamily(QStringLiteral("Inter Display"));
    return font;
}

QFont roundedFont(double points, QFont::Weight weight)
{
    static const QString family = [] {
        for (const auto *name : {"Nunito", "Quicksand", "Varela Round", "Comfortaa"}) {
            if (QFontDatabase::hasFamily(QLatin1String(name)))
                return QString(QLatin1String(name));
        }
        return QString();
    }();
    auto font = displayFont(static_cast<int>(std::lround(points)), weight);
    if (!family.isEmpty())
        font.setFamily(family);
    return font;
}

} // namespace quillnest
