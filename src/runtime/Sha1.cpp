#include "runtime/Sha1.h"

#include <QCryptographicHash>
#include <QFile>

#include <stdexcept>
#include <vector>

namespace quillnest
{

QString sha1OfFile(const QString &path)
{
    QFile file(path);
    const auto fail = [&file, &path] {
        throw std::runtime_error((path + QStringLiteral(": ") + file.errorString()).toStdString());
    };
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        fail();
    QCryptographicHash hash(QCryptographicHash::Sha1);
    std::vector<char> block(4 * 1024 * 1024);
    qint64 count = 0;
    while ((count = file.read(block.data(), static_cast<qint64>(block.size()))) > 0)
        hash.addData(QByteArrayView(block.data(), count));
    if (count < 0)
        fail();
    return QString::fromLatin1(hash.result().toHex());
}

} // namespace quillnest
