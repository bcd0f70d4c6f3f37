#include "platform/HostPlatform.h"

#include <QImage>
#include <gtest/gtest.h>

using namespace quillnest;

TEST(SymbolNames, thoseThatTheLauncherShowsAreAllThere)
{
    const auto symbols = hostSymbols();
    for (const auto *name :
         {"plus", "ellipsis", "chevron.left", "magnifyingglass", "xmark", "xmark.circle.fill", "arrow.down.app",
          "arrow.down.circle", "arrow.down.circle.fill", "bolt.fill", "moon.zzz.fill", "play.fill", "pause.fill",
          "forward.fill", "lock.fill", "photo", "shippingbox.and.arrow.backward", "checkmark.circle.fill"}) {
        const auto image = symbols->pixmap(QLatin1String(name), 16, Qt::black, 2).toImage();
        ASSERT_FALSE(image.isNull()) << name;
        int inked = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                inked += image.pixelColor(x, y).alpha() > 127;
        }
        EXPECT_GT(inked, 20) << name;
        EXPECT_LT(inked, 32 * 32 - 100) << name;
    }
}
