#pragma once

#include <QObject>

namespace quillnest
{

/// Turns SIGTERM, SIGINT and SIGHUP into an orderly end of the event loop, and lets writes to closed pipes fail
/// instead of ending the process. One instance; made on the main thread before any other thread.
class TerminationSignals : public QObject
{
    Q_OBJECT

public:
    TerminationSignals();

Q_SIGNALS:
    void requested();
};

} // namespace quillnest
