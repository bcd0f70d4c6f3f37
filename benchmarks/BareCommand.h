#pragma once

#include <QByteArray>

#include <vector>

namespace quillnest::bench
{

/// The cheapest way to run a program and read what it prints: posix_spawn, one pipe, read, wait. The yardstick for what
/// the program does around its own commands. Throws driver::DriverError when the program fails.
class BareCommand
{
public:
    explicit BareCommand(std::vector<QByteArray> arguments);

    QByteArray run() const;

private:
    const std::vector<QByteArray> m_arguments;
};

} // namespace quillnest::bench
