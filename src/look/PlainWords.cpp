#include "look/PlainWords.h"

#include <QTextDocument>

namespace quillnest
{

QString plainToolTip(const QString &words)
{
    // Without markup the toolkit shows the words as they are, escapes included; only what it would read is escaped.
    // Without markup it doesn't break long lines either.
    constexpr qsizetype longLine = 80;
    if (words.size() <= longLine && !Qt::mightBeRichText(words))
        return words;
    return QStringLiteral("<span>%1</span>").arg(words.toHtmlEscaped().replace(u'\n', QStringLiteral("<br>")));
}

QString plainMenuTitle(QString words)
{
    return words.replace(QLatin1Char('&'), QStringLiteral("&&"));
}

} // namespace quillnest
