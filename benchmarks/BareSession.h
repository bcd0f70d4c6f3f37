#pragma once

#include <QByteArray>
#include <QSize>

#include <vector>

namespace quillnest::bench
{

/// The same steps as at a launch of the program, by a client that has no window and decodes nothing: what adb and the
/// device take by themselves. Throws driver::DriverError when a step fails.
class BareSession
{
public:
    struct Times {
        /// The commands before the session.
        double commands = 0;
        /// Until the video and control sockets are there.
        double connection = 0;
        /// From there until the first picture's last byte.
        double firstFrame = 0;

        double total() const { return commands + connection + firstFrame; }
    };

    struct Plan {
        QByteArray adb;
        QByteArray serial;
        QByteArray serverFile;
        QByteArray package;
        QSize display;
        int dpi = 320;
        /// What is asked of the device before the session begins, without the serial.
        std::vector<std::vector<QByteArray>> commands;
    };

    explicit BareSession(Plan plan);

    /// Milliseconds.
    Times run() const;

private:
    QByteArray adb(const std::vector<QByteArray> &arguments) const;

    const Plan m_plan;
};

} // namespace quillnest::bench
