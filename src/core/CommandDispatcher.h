#pragma once

#include "core/AppLibraryStore.h"

#include <QString>

namespace quillnest
{

/// Carries out the commands of the text channel. A command with a colon takes what follows as its argument; one that
/// names an app takes the first entry of the library whose name contains the argument. Text that is no command, names
/// no entry or finds no open window does nothing beyond its line in the log. Main thread.
class CommandDispatcher
{
public:
    explicit CommandDispatcher(AppLibraryStore::Services services, AppLibraryStore &store);

    void run(const QString &command);

private:
    struct Command {
        /// With a trailing colon: matches by prefix.
        const char *text;
        void (CommandDispatcher::*action)(const QString &argument);
    };
    static const Command table[];

    void back(const QString &argument);
    void snapshotMenu(const QString &argument);
    void add(const QString &argument);
    void closeAll(const QString &argument);
    void media(const QString &argument);
    void paste(const QString &argument);
    void copy(const QString &argument);
    void adBlockOn(const QString &argument);
    void adBlockOff(const QString &argument);
    void wallpaper(const QString &argument);
    void theme(const QString &argument);
    void androidVersion(const QString &argument);
    void home(const QString &argument);
    void hide(const QString &argument);
    void open(const QString &argument);

    void setAdBlock(bool on);

    const AppLibraryStore::Services m_services;
    AppLibraryStore &m_store;
};

} // namespace quillnest
