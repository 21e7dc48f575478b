#include "driverFixture.h"

class NothingToSend : public DriverTest
{
};

TEST_F(NothingToSend, IsAnsweredByZeroAndLeavesTheHostsFrame)
{
    initialise();
    FRAME_PRO frame;
    frame.sendLen = 77;
    EXPECT_EQ(0, intf_getSendFrame(&frame));
    EXPECT_EQ(77, frame.sendLen);
}

TEST_F(NothingToSend, IsAnsweredByZeroWithoutAFrameToFill)
{
    initialise();
    EXPECT_EQ(0, intf_getSendFrame(nullptr));
}
