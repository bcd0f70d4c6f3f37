#include "look/PlainWords.h"

#include <QTextDocument>

namespace quillnest
{

QString plainToolTip(const QString &words)
{
    // Without markup the toolkit shows the words as they are, escapes included; only what it would read is escaped.
    return Qt::mightBeRichText(words) ? QStringLiteral("<span>%1</span>").arg(words.toHtmlEscaped()) : words;
}

QString plainMenuTitle(QString words)
{
    return words.replace(QLatin1Char('&'), QStringLiteral("&&"));
}

} // namespace quillnest
