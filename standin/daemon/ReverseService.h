#pragma once

#include "daemon/AdbTransport.h"

namespace standin
{

/// Answers "reverse:forward:", "reverse:killforward:", "reverse:killforward-all" and "reverse:list-forward".
/// `request` is the service name behind "reverse:".
void serveReverse(AdbTransport &transport, const QByteArray &request, AdbStream &stream);

} // namespace standin
