#pragma once

#include "platform/DescribedError.h"

#include <exception>

namespace quillnest
{

/// A failure of device work that the user waits for, with its sentence for the user.
class AndroidRuntimeError : public DescribedError
{
public:
    enum class Case { toolMissing, commandFailed, bootTimeout, packageNameMissing, portTaken, serverOfAnother };

    static AndroidRuntimeError toolMissing(const QString &tool);
    /// `text` is the tool's own words, of which the middle is left out if they are very many; empty text gets a
    /// general sentence.
    static AndroidRuntimeError commandFailed(const QString &text);
    static AndroidRuntimeError bootTimeout();
    static AndroidRuntimeError packageNameMissing();
    /// Somebody else's device is where ours has to be.
    static AndroidRuntimeError portTaken(const QString &port);
    /// Another user's adb server is where ours has to be.
    static AndroidRuntimeError serverOfAnother(int port);

    Case errorCase() const { return m_case; }

private:
    AndroidRuntimeError(Case errorCase, QString description);

    Case m_case;
};

/// What the waiting coroutines get when the object that they wait on has gone. Not for the user.
class AndroidRuntimeCancelled : public std::exception
{
public:
    const char *what() const noexcept override { return "android runtime cancelled"; }
};

} // namespace quillnest
