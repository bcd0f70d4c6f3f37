#pragma once

#include <QString>

namespace standin
{

class Device;

/// What `dumpsys notification` and `dumpsys media_session` print.
QString dumpNotifications(const Device &device);
QString dumpMediaSessions(const Device &device);

} // namespace standin
