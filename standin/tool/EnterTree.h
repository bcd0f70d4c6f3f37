#pragma once

namespace standin
{

/// Makes the folder the root of this process and becomes the program. Returns only on failure, with an exit status.
/// Without the administrator's rights it goes through a user namespace in which the user is root.
int enterTree(const char *root, char **command);

} // namespace standin
