#pragma once

#include "platform/Archives.h"
#include "platform/ChildProcesses.h"

#include <memory>

namespace quillnest
{

/// Unpacks by "unzip" into a folder beside the one that is asked for, looks at what came out, and moves it over. Each
/// entry of the archive's top level appears in one step: whoever looks finds it as it was or as it is to be, also after
/// a kill at any moment. What a killed run left behind goes with the next one.
class UnzipArchives : public Archives
{
public:
    explicit UnzipArchives(std::shared_ptr<ChildProcesses> processes) : m_processes(std::move(processes)) { }

    bool unpack(const QString &archive, const QString &folder) override;

private:
    bool hasOnlyNamesWithin(const QString &archive) const;

    const std::shared_ptr<ChildProcesses> m_processes;
};

} // namespace quillnest
