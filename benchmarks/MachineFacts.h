#pragma once

#include <QString>

namespace quillnest::bench
{

/// What the figures were measured on, as lines of "name: value".
QString machineFacts();

} // namespace quillnest::bench
