#include "base/MobileApp.h"

#include <QRegularExpression>

namespace quillnest
{

QString MobileApp::displayName() const
{
    static const QRegularExpression version(QStringLiteral("[-_ ]v?\\d+([.\\-_ ].*)?$"));
    QString shortened = name;
    const auto match = version.match(name);
    if (match.hasMatch())
        shortened.remove(match.capturedStart(), match.capturedLength());
    return shortened.isEmpty() ? name : shortened;
}

QString uuidText(const QUuid &id)
{
    return id.toString(QUuid::WithoutBraces).toUpper();
}

QString platformText(MobilePlatform platform)
{
    return platform == MobilePlatform::android ? QStringLiteral("Android") : QStringLiteral("iOS / iPadOS");
}

std::optional<MobilePlatform> platformFromText(const QString &text)
{
    for (const auto platform : {MobilePlatform::android, MobilePlatform::ios}) {
        if (text == platformText(platform))
            return platform;
    }
    return std::nullopt;
}

} // namespace quillnest
