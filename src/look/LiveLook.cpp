#include "look/LiveLook.h"

#include "platform/Appearance.h"

namespace quillnest
{

LiveLook::LiveLook(const Platform &hostPlatform) : Look(Look::current(hostPlatform))
{
    if (!hostPlatform.appearance)
        return;
    connect(hostPlatform.appearance.get(), &Appearance::changed, this, [this] {
        static_cast<Look &>(*this) = Look::current(*platform);
        Q_EMIT changed();
    });
}

} // namespace quillnest
