#include "stream/BigEndian.h"

#include <vector>

#include <gtest/gtest.h>

using namespace quillnest;

TEST(BigEndianTest, valueInTheMiddleOfBytes)
{
    const std::vector<std::uint8_t> bytes{0xff, 0x80, 0x01, 0x02, 0xfe};
    EXPECT_EQ(readBE(bytes, 1), 0x800102feU);
}
