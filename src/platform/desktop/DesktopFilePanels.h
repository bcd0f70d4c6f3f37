#pragma once

#include "platform/FilePanels.h"

namespace quillnest
{

/// Open panels by the toolkit, which uses the desktop's own where there is one.
class DesktopFilePanels : public FilePanels
{
public:
    void open(const OpenPanel &panel, std::function<void(const QList<QUrl> &)> answer) override;
};

} // namespace quillnest
