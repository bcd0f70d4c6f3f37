#pragma once

#include <QObject>

namespace quillnest
{

/// The desktop's appearance, light or dark.
class Appearance : public QObject
{
    Q_OBJECT

public:
    /// Whether the user has asked for dark. Answers at once; any thread.
    virtual bool isDark() const = 0;

Q_SIGNALS:
    /// The user changed it. Main thread.
    void changed();
};

/// One that never changes, for pictures that are to look the same everywhere.
class FixedAppearance : public Appearance
{
    Q_OBJECT

public:
    explicit FixedAppearance(bool dark) : m_dark(dark) { }
    bool isDark() const override { return m_dark; }

private:
    const bool m_dark;
};

} // namespace quillnest
