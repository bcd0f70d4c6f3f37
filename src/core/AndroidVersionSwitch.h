#pragma once

#include "core/AndroidStatus.h"
#include "core/StatusLine.h"
#include "core/StoreServices.h"

#include <QSet>

namespace quillnest
{

/// Which Android version the apps run on, and the removal of another's files. Main thread.
class AndroidVersionSwitch : public QObject
{
    Q_OBJECT

public:
    AndroidVersionSwitch(const StoreServices &services, AndroidStatus &android, StatusLine &status);

    /// Makes another version the one that apps run on: closes all windows and lets the device go down in the
    /// background. The same happens when the setting is changed from outside. A version whose files are just being
    /// removed is refused.
    void switchTo(int api);

    /// Removes the files of a version other than the selected one, in the background. Shared tools stay.
    void remove(int api);

Q_SIGNALS:
    /// Another version is the selected one.
    void switched();
    /// The files of a version have gone.
    void removed(int api);

private:
    /// The setting has changed, by whoever.
    void follow();
    /// The windows and the device of the version before.
    void leave(int api);
    void arrive(int api);
    Task<> removeFiles(int api);

    const StoreServices &m_services;
    AndroidStatus &m_android;
    StatusLine &m_status;
    /// What the settings said when it was last acted on.
    int m_selected;
    bool m_switching = false;
    QSet<int> m_beingRemoved;
};

} // namespace quillnest
