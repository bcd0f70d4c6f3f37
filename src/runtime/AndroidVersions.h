#pragma once

#include "platform/SettingsStore.h"
#include "runtime/RuntimeSettings.h"

#include <QString>

#include <array>
#include <vector>

namespace quillnest
{

struct Platform;

/// The Android versions that a user may pick.
namespace AndroidVersions
{
struct Version {
    int api;
    const char *name;
};

constexpr int defaultApi = static_cast<int>(RuntimeSettings::androidAPI.defaultValue());

/// In the order in which they are offered.
constexpr std::array<Version, 7> all{{
    {30, "Android 11"},
    {31, "Android 12"},
    {32, "Android 12L"},
    {33, "Android 13"},
    {34, "Android 14"},
    {35, "Android 15"},
    {36, "Android 16"},
}};

/// The API that the settings name, or the default for anything that isn't in the table. Any thread.
int selected(const SettingsStore &settings);

/// The name in the table; "Android (API {api})" for an API outside it.
QString name(int api);

/// The APIs, in table order, whose managed installation is complete. Looks at the disk; any thread.
std::vector<int> installed(const Platform &platform);
} // namespace AndroidVersions

} // namespace quillnest
