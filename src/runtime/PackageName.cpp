#include "runtime/PackageName.h"

#include <QRegularExpression>

namespace quillnest
{

bool isValidPackageName(QStringView name)
{
    static const QRegularExpression grammar(
        QRegularExpression::anchoredPattern(QStringLiteral("[A-Za-z][A-Za-z0-9_]*(\\.[A-Za-z][A-Za-z0-9_]*)+")));
    constexpr qsizetype maximumLength = 255;
    return name.size() <= maximumLength && grammar.match(name.toString()).hasMatch();
}

} // namespace quillnest
