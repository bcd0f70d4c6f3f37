#pragma once

#include "platform/Platform.h"
#include "runtime/RuntimePlan.h"

namespace quillnest
{

/// Works out from Google's public package lists what this host has to download for the selected Android version.
namespace RuntimeRepository
{
/// A package that is missing, and the list that has it.
struct Wanted {
    QString path;
    QUrl manifest;
    /// What the list's relative addresses are relative to.
    QUrl base;

    bool operator==(const Wanted &) const = default;
};

/// The tools that the managed installation lacks, and always the system image. Looks at the disk.
std::vector<Wanted> wanted(const Platform &platform);

/// The path of the system image's package for the selected version, which comes last in every plan.
QString image(const Platform &platform);

/// Fetches the lists and chooses from them. Throws RuntimeProvisionError, or NetworkError as the host words it. Main
/// thread.
Task<RuntimePlan> plan(Platform platform);
} // namespace RuntimeRepository

} // namespace quillnest
