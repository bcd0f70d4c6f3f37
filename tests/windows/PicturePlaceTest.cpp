#include "windows/PicturePlace.h"

#include <gtest/gtest.h>

#include <vector>

using namespace quillnest;

TEST(PicturePlace, isUnscaledWhenOnlyTheRoundingOfTheDisplaySizeIsMissing)
{
    struct Row {
        QSizeF view;
        QSize picture;
        QRect expected;
    };
    const std::vector<Row> table{
        {{776, 1448}, {776, 1448}, {0, 0, 776, 1448}},
        // 390 by 724 points at a scale of 1.25: the half pixel is one of the screen's, and none of the display's.
        {{487.5, 905}, {480, 904}, {4, 0, 480, 904}},
        {{488, 905}, {480, 904}, {4, 0, 480, 905}},
        {{488.25, 905}, {488, 904}, {0, 0, 488, 904}},
        {{780, 1448}, {776, 1448}, {2, 0, 776, 1448}},
        {{783, 1455}, {776, 1448}, {3, 3, 776, 1448}},
        // Eight pixels are more than the rounding.
        {{784, 1448}, {776, 1448}, {4, 0, 776, 1448}},
        {{784, 1455}, {776, 1448}, {2, 0, 779, 1455}},
        {{783, 1456}, {776, 1448}, {1, 0, 780, 1456}},
        {{784, 1456}, {776, 1448}, {2, 0, 780, 1456}},
        {{775, 1448}, {776, 1448}, {0, 1, 775, 1446}},
        {{400, 800}, {800, 800}, {0, 200, 400, 400}},
        {{800, 400}, {100, 100}, {200, 0, 400, 400}},
        {{0, 400}, {100, 100}, {}},
        {{400, 400}, {0, 100}, {}},
    };
    for (const auto &row : table)
        EXPECT_EQ(PicturePlace::rect(row.view, row.picture), row.expected)
            << row.view.width() << "x" << row.view.height();
}

TEST(PicturePlace, aPointIsThePixelThatIsDrawnThereOrTheNearestOne)
{
    struct Row {
        QPointF point;
        QSizeF view;
        double scale;
        QSize picture;
        QPointF expected;
    };
    const std::vector<Row> table{
        {{200, 400}, {400, 800}, 1, {800, 800}, {400, 400}},
        {{200, 50}, {400, 800}, 1, {800, 800}, {400, 0}},
        {{200, 799}, {400, 800}, 1, {800, 800}, {400, 799}},
        {{0, 0}, {390, 724}, 1, {390, 724}, {0, 0}},
        {{389, 723}, {390, 724}, 1, {390, 724}, {389, 723}},
        {{400, 900}, {390, 724}, 1, {390, 724}, {389, 723}},
        {{-5, -5}, {390, 724}, 1, {390, 724}, {0, 0}},
        {{0, 100}, {800, 200}, 1, {100, 100}, {0, 50}},
        {{300, 0}, {800, 200}, 1, {100, 100}, {0, 0}},
        {{799, 199}, {800, 200}, 1, {100, 100}, {99, 99}},
        {{500, 100}, {800, 200}, 1, {100, 100}, {99, 50}},
        // Drawn unscaled, with the pixels that are left over shared between two sides.
        {{2, 3}, {397, 727}, 1, {392, 720}, {0, 0}},
        {{102, 203}, {397, 727}, 1, {392, 720}, {100, 200}},
        {{1, 0}, {390, 724}, 2, {776, 1448}, {0, 0}},
        {{2, 1}, {390, 724}, 2, {776, 1448}, {2, 2}},
        {{388.5, 723.5}, {390, 724}, 2, {776, 1448}, {775, 1447}},
        {{3, 0}, {390, 724}, 1.25, {480, 904}, {0, 0}},
        {{4.8, 0.8}, {390, 724}, 1.25, {480, 904}, {2, 1}},
        // A picture of another size is scaled in pixels, too.
        {{50, 100}, {100, 200}, 2, {50, 100}, {25, 50}},
        {{10, 10}, {0, 200}, 1, {50, 100}, {0, 0}},
    };
    for (const auto &row : table) {
        const auto pixel = PicturePlace::pixelAt(row.point, row.view, row.scale, row.picture);
        EXPECT_NEAR(pixel.x(), row.expected.x(), 1e-6) << row.point.x() << "," << row.point.y();
        EXPECT_NEAR(pixel.y(), row.expected.y(), 1e-6) << row.point.x() << "," << row.point.y();
    }
}
