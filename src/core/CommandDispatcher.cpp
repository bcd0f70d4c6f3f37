#include "core/CommandDispatcher.h"

#include "runtime/AndroidAdBlock.h"

namespace quillnest
{

const CommandDispatcher::Command CommandDispatcher::table[] = {
    {"back", &CommandDispatcher::back},
    {"snapshot-menu", &CommandDispatcher::snapshotMenu},
    {"add:", &CommandDispatcher::add},
    {"close-all", &CommandDispatcher::closeAll},
    {"media", &CommandDispatcher::media},
    {"paste", &CommandDispatcher::paste},
    {"copy", &CommandDispatcher::copy},
    {"adblock-on", &CommandDispatcher::adBlockOn},
    {"adblock-off", &CommandDispatcher::adBlockOff},
    {"wallpaper:", &CommandDispatcher::wallpaper},
    {"theme:", &CommandDispatcher::theme},
    {"android-version:", &CommandDispatcher::androidVersion},
    {"home", &CommandDispatcher::home},
    {"hide", &CommandDispatcher::hide},
    {"open:", &CommandDispatcher::open},
};

CommandDispatcher::CommandDispatcher(AppLibraryStore::Services services, AppLibraryStore &store)
    : m_services(std::move(services)), m_store(store)
{
}

void CommandDispatcher::run(const QString &command)
{
    m_services.log->write(QStringLiteral("command %1").arg(command));
    for (const auto &[text, action] : table) {
        const QLatin1String name(text);
        const bool takesArgument = name.endsWith(QLatin1Char(':'));
        if (takesArgument ? command.startsWith(name) : command == name) {
            (this->*action)(command.mid(name.size()));
            return;
        }
    }
}

void CommandDispatcher::back(const QString &)
{
    if (auto *session = m_services.windows.firstSession())
        session->handleBack();
}

void CommandDispatcher::snapshotMenu(const QString &)
{
    m_store.writeMenuSnapshot();
}

void CommandDispatcher::add(const QString &argument)
{
    m_store.addFiles({QUrl::fromLocalFile(argument)});
}

void CommandDispatcher::closeAll(const QString &)
{
    m_services.windows.closeAll();
}

void CommandDispatcher::media(const QString &)
{
    const auto appID = m_store.nowPlayingAppID();
    if (auto *session = appID ? m_services.windows.session(*appID) : nullptr)
        session->sendMediaKey(MediaAction::playPause);
}

void CommandDispatcher::paste(const QString &)
{
    if (auto *session = m_services.windows.firstSession())
        session->paste();
}

void CommandDispatcher::copy(const QString &)
{
    if (auto *session = m_services.windows.firstSession())
        session->copy();
}

void CommandDispatcher::setAdBlock(bool on)
{
    m_services.platform.settings->setValue(QStringLiteral("QuillnestAdBlock"), on);
    m_services.platform.executor->inBackground([commands = m_services.runtime.commands()] {
        if (commands->deviceIsBooted())
            AndroidAdBlock::apply(*commands);
    });
}

void CommandDispatcher::adBlockOn(const QString &)
{
    setAdBlock(true);
}

void CommandDispatcher::adBlockOff(const QString &)
{
    setAdBlock(false);
}

void CommandDispatcher::wallpaper(const QString &argument)
{
    m_services.platform.settings->setValue(QStringLiteral("QuillnestWallpaper"), argument);
}

void CommandDispatcher::theme(const QString &argument)
{
    m_services.platform.settings->setValue(QStringLiteral("QuillnestTheme"), argument);
}

void CommandDispatcher::androidVersion(const QString &argument)
{
    bool isNumber = false;
    const int api = argument.toInt(&isNumber);
    if (isNumber)
        m_store.switchAndroidVersion(api);
}

void CommandDispatcher::home(const QString &)
{
    m_services.windows.showMenuBarPopup(std::nullopt);
}

void CommandDispatcher::hide(const QString &)
{
    if (auto *session = m_services.windows.firstSession())
        session->hide();
}

void CommandDispatcher::open(const QString &argument)
{
    if (const auto app = m_store.firstMatch(argument))
        m_store.launch(*app);
}

} // namespace quillnest
