#pragma once

#include <QString>

#include <optional>

namespace quillnest
{

/// The desktop's general clipboard, as far as text goes. Main thread.
class Pasteboard
{
public:
    virtual ~Pasteboard() = default;

    /// A number that changes whenever the clipboard's content does, whoever changed it.
    virtual int changeCount() const = 0;

    /// The text on the clipboard, if it holds any.
    virtual std::optional<QString> string() const = 0;

    /// Whether whoever put the text there, such as a password manager, asks that it go nowhere by itself.
    virtual bool isSecret() const = 0;

    /// Replaces whatever is on the clipboard.
    virtual void setString(const QString &text) = 0;
};

} // namespace quillnest
