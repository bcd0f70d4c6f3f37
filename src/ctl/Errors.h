#pragma once

#include <QString>

#include <stdexcept>

namespace quillnest::ctl
{

/// The command line is wrong; the text says where. Exit status 2.
class UsageError : public std::runtime_error
{
public:
    explicit UsageError(const QString &text) : std::runtime_error(text.toStdString()) { }
};

/// What was asked for can't be done; the text says why. Exit status 1.
class Failure : public std::runtime_error
{
public:
    explicit Failure(const QString &text) : std::runtime_error(text.toStdString()) { }
};

} // namespace quillnest::ctl
