#pragma once

#include <QObject>
#include <QString>

namespace quillnest
{

/// The one line that tells the user the outcome of what was done last. Main thread.
class StatusLine : public QObject
{
    Q_OBJECT

public:
    const QString &text() const { return m_text; }
    void say(const QString &text)
    {
        m_text = text;
        Q_EMIT changed();
    }

Q_SIGNALS:
    void changed();

private:
    QString m_text = QStringLiteral("Ready");
};

} // namespace quillnest
