#pragma once

#include "platform/InstanceDoor.h"

namespace quillnest
{

/// A door that lets everybody in. A test knocks by its signal.
class FakeInstanceDoor : public InstanceDoor
{
    Q_OBJECT

public:
    Entry enter(const QString & /*folder*/, const QStringList & /*arguments*/) override { return Entry::first; }
};

} // namespace quillnest
