#pragma once

namespace quillnest
{

/// Who is behind a socket of this machine. Trusted are this user and the administrator, and everybody on a host that
/// doesn't tell.
enum class SocketOwner { nobody, trusted, another };

} // namespace quillnest
