#include "daemon/ReverseService.h"

namespace standin
{

namespace
{

QByteArray counted(const QByteArray &text)
{
    return QByteArray::number(text.size(), 16).rightJustified(4, '0') + text;
}

QByteArray failure(const QByteArray &text)
{
    return "FAIL" + counted(text);
}

QByteArray forward(ReverseTable &reverses, QByteArray request)
{
    const bool mayRebind = !request.startsWith("norebind:");
    if (!mayRebind)
        request.remove(0, 9);
    const auto separator = request.indexOf(';');
    if (separator <= 0 || separator + 1 == request.size())
        return failure("bad forward: " + request);
    const QByteArray local = request.left(separator);
    if (!local.startsWith("localabstract:") && !local.startsWith("tcp:"))
        return failure("cannot bind listener: unsupported socket type " + local);
    if (!reverses.add(local, request.mid(separator + 1), mayRebind))
        return failure("cannot bind listener: Address already in use");
    return "OKAY";
}

QByteArray answer(ReverseTable &reverses, const QByteArray &request)
{
    if (request.startsWith("forward:"))
        return forward(reverses, request.mid(8));
    if (request == "killforward-all") {
        reverses.clear();
        return "OKAY";
    }
    if (request.startsWith("killforward:")) {
        const QByteArray local = request.mid(12);
        return reverses.remove(local) ? QByteArray("OKAY") : failure("listener '" + local + "' not found");
    }
    if (request == "list-forward") {
        QByteArray lines;
        for (const auto &[local, remote] : reverses.list())
            lines += "(reverse) " + local + ' ' + remote + '\n';
        return counted(lines);
    }
    return failure("unknown reverse request");
}

} // namespace

void serveReverse(AdbTransport &transport, const QByteArray &request, AdbStream &stream)
{
    stream.write(answer(transport.reverses(), request));
}

} // namespace standin
