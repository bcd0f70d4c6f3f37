#pragma once

#include <stdexcept>
#include <string>

namespace quillnest
{

/// Why a connection to the device's side failed. Its text form, `failed("...")`, is what the user is shown.
class SocketError : public std::runtime_error
{
public:
    static SocketError failed(const std::string &text) { return SocketError("failed(\"" + text + "\")"); }

private:
    using std::runtime_error::runtime_error;
};

} // namespace quillnest
