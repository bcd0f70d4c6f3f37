#pragma once

#include "platform/DiagnosticsPort.h"

#include <QObject>
#include <QString>

namespace quillnest
{

/// The report as the method "report" of the interface "app.quillnest.Diagnostics" on the session bus: service
/// "app.quillnest.Quillnest", object "/app/quillnest/diagnostics", answer one text.
class DBusDiagnostics : public QObject, public DiagnosticsPort
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "app.quillnest.Diagnostics")

public:
    bool serve(std::function<QByteArray()> report) override;
    std::optional<QByteArray> ask() override;

public Q_SLOTS:
    Q_SCRIPTABLE QString report() const;

private:
    std::function<QByteArray()> m_report;
};

} // namespace quillnest
