#pragma once

#include <QString>

namespace quillnest
{

/// Sentences for the commonest failures of tools and networks, put in front of what those say themselves.
namespace PlainFailures
{
/// Why an app could not be installed; `words` are what the development bridge printed.
QString ofInstall(const QString &words);

/// Why a download or what follows it failed; `words` as they came, if they tell nothing that is known.
QString ofSetup(const QString &words);
} // namespace PlainFailures

} // namespace quillnest
