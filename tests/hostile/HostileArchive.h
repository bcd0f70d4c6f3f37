#pragma once

#include "hostile/Chance.h"

#include <QByteArray>

namespace quillnest::hostile
{

/// A whole package file that means no good: an archive with all that one of an app holds, in which something lies. The
/// same number always gives the same.
QByteArray hostilePackage(std::uint64_t number);

} // namespace quillnest::hostile
