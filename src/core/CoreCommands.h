#pragma once

namespace quillnest
{

class AndroidWindowRegistry;
class AppLibraryStore;
class CommandDispatcher;

/// Says what the commands about the library, Android and the windows do. A command that names an app takes the first
/// entry of the library whose name contains the argument; one for a window the first window. Without such an entry or
/// window nothing happens. All of these live as long as the commands are taken.
void handleCoreCommands(CommandDispatcher &commands, AppLibraryStore &store, AndroidWindowRegistry &windows);

} // namespace quillnest
