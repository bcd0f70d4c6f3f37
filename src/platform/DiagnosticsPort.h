#pragma once

#include <QByteArray>

#include <functional>
#include <optional>

namespace quillnest
{

/// Lets scripts and tests in the user's session ask a running instance what it is doing. Main thread.
class DiagnosticsPort
{
public:
    virtual ~DiagnosticsPort() = default;

    /// Answers from now on with what `report` gives. False when the host's message bus can't be reached or another
    /// instance answers already.
    virtual bool serve(std::function<QByteArray()> report) = 0;

    /// Asks the running instance and waits for its answer; nothing when there is none.
    virtual std::optional<QByteArray> ask() = 0;
};

} // namespace quillnest
