#pragma once

#include <QString>

#include <optional>

namespace quillnest
{

/// Whether the desktop starts the program when its user logs in. Main thread.
class LoginItems
{
public:
    /// The values are the raw status of the log.
    enum class Status {
        notRegistered = 0,
        enabled = 1,
        /// It is registered, and the user has switched it off in the desktop's own settings.
        requiresApproval = 2,
        notFound = 3
    };

    virtual ~LoginItems() = default;
    virtual Status status() const = 0;
    /// Registers or unregisters the program; answers why that was not possible, in the host's words.
    virtual std::optional<QString> set(bool enabled) = 0;
};

} // namespace quillnest
