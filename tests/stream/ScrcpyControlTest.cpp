#include "stream/ScrcpyControl.h"

#include <gtest/gtest.h>

using namespace quillnest;
using namespace quillnest::ScrcpyControl;

namespace
{
std::string hex(const QByteArray &bytes)
{
    return bytes.toHex(' ').toStdString();
}
} // namespace

TEST(ScrcpyControlTest, unsignedFixedPointSaturatesAndCutsTowardsZero)
{
    EXPECT_EQ(u16fp(1.0F), 0xFFFF);
    EXPECT_EQ(u16fp(7.5F), 0xFFFF);
    EXPECT_EQ(u16fp(0.0F), 0);
    EXPECT_EQ(u16fp(-0.5F), 0);
    EXPECT_EQ(u16fp(0.5F), 0x8000);
    EXPECT_EQ(u16fp(0.25F), 0x4000);
    // The largest value below 1.0, and one that lies between two steps.
    EXPECT_EQ(u16fp(0.99999994F), 0xFFFF);
    EXPECT_EQ(u16fp(1.9F / 65536.0F), 1);
}

TEST(ScrcpyControlTest, signedFixedPointSaturatesOnBothSides)
{
    EXPECT_EQ(i16fp(1.0F), 0x7FFF);
    EXPECT_EQ(i16fp(1.5F), 0x7FFF);
    EXPECT_EQ(i16fp(-1.0F), -0x8000);
    EXPECT_EQ(i16fp(-2.0F), -0x8000);
    EXPECT_EQ(i16fp(0.0F), 0);
    EXPECT_EQ(i16fp(0.5F), 0x4000);
    EXPECT_EQ(i16fp(-0.5F), -0x4000);
    EXPECT_EQ(i16fp(-1.9F / 32768.0F), -1);
}

TEST(ScrcpyControlTest, positionRoundsThePointAndCutsTheFrame)
{
    QByteArray bytes("\x03", 1);
    position(bytes, QPointF(10.5, -3.6), QSizeF(1080.9, 1920.2));
    EXPECT_EQ(hex(bytes), "03 00 00 00 0b ff ff ff fc 04 38 07 80");
}

TEST(ScrcpyControlTest, positionWithAFrameThatNoScreenHasKeepsItsLowBits)
{
    // A device may announce any size; what doesn't fit is cut off and not left to chance.
    QByteArray bytes;
    position(bytes, QPointF(0, 0), QSizeF(4294967295.0, 65537.0));
    EXPECT_EQ(hex(bytes), "00 00 00 00 00 00 00 00 ff ff 00 01");
}

TEST(ScrcpyControlTest, keyMessage)
{
    EXPECT_EQ(hex(key(KeyAction::down, 0x42, 0x1001)), "00 00 00 00 00 42 00 00 00 00 00 00 10 01");
    EXPECT_EQ(hex(key(KeyAction::up, 0xFFFFFFFF, 0)), "00 01 ff ff ff ff 00 00 00 00 00 00 00 00");
}

TEST(ScrcpyControlTest, textMessage)
{
    EXPECT_EQ(hex(text(QStringLiteral("hé"))), "01 00 00 00 03 68 c3 a9");
    EXPECT_EQ(hex(text(QString())), "01 00 00 00 00");
}

TEST(ScrcpyControlTest, textOf301CharactersCarries300Bytes)
{
    const auto bytes = text(QString(301, QLatin1Char('x')));
    EXPECT_EQ(hex(bytes.left(5)), "01 00 00 01 2c");
    EXPECT_EQ(bytes.mid(5), QByteArray(300, 'x'));
}

TEST(ScrcpyControlTest, textIsCutInsideACharacterWhenItsLimitFallsThere)
{
    const auto bytes = text(QString(299, QLatin1Char('x')) + QStringLiteral("é"));
    EXPECT_EQ(bytes.size(), 305);
    EXPECT_EQ(hex(bytes.right(2)), "78 c3");
}

TEST(ScrcpyControlTest, touchUpHasNoPressure)
{
    EXPECT_EQ(
        hex(touch(MotionAction::up, QPointF(10.4, 10.6), QSizeF(1080, 1920))),
        "02 01 ff ff ff ff ff ff ff fe 00 00 00 0a 00 00 00 0b 04 38 07 80 00 00 00 00 00 00 00 00 00 00");
}

TEST(ScrcpyControlTest, touchDownAndMoveHaveFullPressureThatDoesNotWrap)
{
    EXPECT_EQ(
        hex(touch(MotionAction::down, QPointF(0, 0), QSizeF(1, 2))),
        "02 00 ff ff ff ff ff ff ff fe 00 00 00 00 00 00 00 00 00 01 00 02 ff ff 00 00 00 00 00 00 00 00");
    EXPECT_EQ(
        hex(touch(MotionAction::move, QPointF(-1, 65536), QSizeF(65535, 0))),
        "02 02 ff ff ff ff ff ff ff fe ff ff ff ff 00 01 00 00 ff ff 00 00 ff ff 00 00 00 00 00 00 00 00");
}

TEST(ScrcpyControlTest, scrollMessage)
{
    EXPECT_EQ(
        hex(scroll(QPointF(1, 2), QSizeF(776, 1448), -2.0F, 1.5F)),
        "03 00 00 00 01 00 00 00 02 03 08 05 a8 80 00 7f ff 00 00 00 00");
    EXPECT_EQ(
        hex(scroll(QPointF(0, 0), QSizeF(8, 8), 0.25F, -0.25F)),
        "03 00 00 00 00 00 00 00 00 00 08 00 08 20 00 e0 00 00 00 00 00");
}

TEST(ScrcpyControlTest, messagesWithoutArguments)
{
    EXPECT_EQ(hex(backDown()), "04 00");
    EXPECT_EQ(hex(backUp()), "04 01");
    EXPECT_EQ(hex(getClipboardCopy()), "08 01");
    EXPECT_EQ(hex(getClipboardCut()), "08 02");
    EXPECT_EQ(hex(resetVideo()), "11");
}

TEST(ScrcpyControlTest, setClipboardMessage)
{
    EXPECT_EQ(
        hex(setClipboard(QStringLiteral("ab"), true, 0x0102030405060708)),
        "09 01 02 03 04 05 06 07 08 01 00 00 00 02 61 62");
    EXPECT_EQ(hex(setClipboard(QString(), false, 2)), "09 00 00 00 00 00 00 00 02 00 00 00 00 00");
}

TEST(ScrcpyControlTest, clipboardOverItsLimitCarries200000Bytes)
{
    const auto bytes = setClipboard(QString(200001, QLatin1Char('y')), false, 2);
    EXPECT_EQ(bytes.size(), 14 + 200000);
    EXPECT_EQ(hex(bytes.mid(10, 4)), "00 03 0d 40");
    EXPECT_EQ(setClipboard(QString(200000, QLatin1Char('y')), false, 2), bytes);
}

TEST(ScrcpyControlTest, startAppMessage)
{
    EXPECT_EQ(hex(startApp(QStringLiteral("+a.b"))), "10 04 2b 61 2e 62");
    EXPECT_EQ(hex(startApp(QString())), "10 00");
}

TEST(ScrcpyControlTest, startAppOf300BytesCarries255)
{
    const auto bytes = startApp(QString(300, QLatin1Char('z')));
    EXPECT_EQ(hex(bytes.left(2)), "10 ff");
    EXPECT_EQ(bytes.mid(2), QByteArray(255, 'z'));
}

TEST(ScrcpyControlTest, resizeDisplayClampsItsSides)
{
    EXPECT_EQ(hex(resizeDisplay(776, 1448)), "15 03 08 05 a8");
    EXPECT_EQ(hex(resizeDisplay(70000, -5)), "15 ff ff 00 00");
    EXPECT_EQ(hex(resizeDisplay(65535, 65536)), "15 ff ff ff ff");
}
