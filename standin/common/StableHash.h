#pragma once

#include <QString>

namespace standin
{

/// The same in every process, unlike qHash, which is seeded anew: what an app looks and sounds like must not change.
inline quint32 stableHash(const QString &text)
{
    quint32 hash = 2166136261U; // FNV-1a
    for (const QChar letter : text)
        hash = (hash ^ letter.unicode()) * 16777619U;
    return hash;
}

} // namespace standin
