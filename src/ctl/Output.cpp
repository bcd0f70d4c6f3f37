#include "ctl/Output.h"

#include "base/PlainText.h"
#include "ctl/Errors.h"
#include "platform/StandardOutput.h"

#include <QStringDecoder>

#include <cstdio>
#include <system_error>

namespace quillnest::ctl
{

namespace
{
/// For a terminal, which would obey what the texts of others may hold.
QByteArray escaped(const QString &text)
{
    QString result;
    for (const auto character : text) {
        if (character == u'\n' || character == u'\t' || !isCommanding(character))
            result += character;
        else
            result += QStringLiteral("\\u%1").arg(static_cast<int>(character.unicode()), 4, 16, QLatin1Char('0'));
    }
    return result.toUtf8();
}
} // namespace

bool print(const QByteArray &text)
{
    try {
        // One for all pieces: a character may lie across the end of one.
        static QStringDecoder decoder(QStringConverter::Utf8);
        return writeToStandardOutput(standardOutputIsTerminal() ? escaped(decoder.decode(text)) : text);
    } catch (const std::system_error &error) {
        throw Failure(QStringLiteral("can't write: %1").arg(QString::fromLocal8Bit(error.code().message().c_str())));
    }
}

void complain(const QString &text)
{
    const auto shown = standardErrorIsTerminal() ? escaped(text) : text.toUtf8();
    std::fprintf(stderr, "quillnestctl: %s\n", shown.constData());
}

} // namespace quillnest::ctl
