#pragma once

#include "base/MobileApp.h"

#include <QByteArray>

#include <optional>
#include <vector>

namespace quillnest
{

/// The library as it is kept in the settings: UTF-8 JSON, an array of objects in stored order with the keys "id",
/// "name", "platform", "sourcePath", "bundleIdentifier" (left out when absent), "addedAt" (seconds since 2001-01-01
/// 00:00:00 UTC) and "isFavorite". Pure functions; any thread.
namespace LibraryFormat
{
QByteArray encode(const std::vector<MobileApp> &apps);

/// All or nothing: one bad record loses the whole list. All keys but "bundleIdentifier" are required, others ignored.
std::optional<std::vector<MobileApp>> decode(const QByteArray &bytes);
} // namespace LibraryFormat

} // namespace quillnest
