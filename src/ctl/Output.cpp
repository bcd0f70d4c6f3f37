#include "ctl/Output.h"

#include "ctl/Errors.h"
#include "platform/StandardOutput.h"

#include <cstdio>
#include <system_error>

namespace quillnest::ctl
{

bool print(const QByteArray &text)
{
    try {
        return writeToStandardOutput(text);
    } catch (const std::system_error &error) {
        throw Failure(QStringLiteral("can't write: %1").arg(QString::fromLocal8Bit(error.code().message().c_str())));
    }
}

void complain(const QString &text)
{
    std::fprintf(stderr, "quillnestctl: %s\n", qUtf8Printable(text));
}

} // namespace quillnest::ctl
