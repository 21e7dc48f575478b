#include "tank.h"
#include "plcMemory.h"
#include "randomSource.h"
#include "tankProgram.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

enum { SECOND_MS = 1000, MINUTE_MS = 60000 };

Tank::Controls controls(bool pump, bool valve)
{
    Tank::Controls made;
    made.pump = pump;
    made.valve = valve;
    return made;
}

} // namespace

TEST(TankTest, KeepsItsLevelWithPumpOffAndValveClosed)
{
    Tank tank;
    tank.run(MINUTE_MS, controls(false, false));
    EXPECT_DOUBLE_EQ(tank.level(), 40);
    EXPECT_DOUBLE_EQ(tank.inflow(), 0);
    EXPECT_DOUBLE_EQ(tank.outflow(), 0);
}

TEST(TankTest, PumpRaisesTheLevelBySixLitresASecond)
{
    Tank tank;
    tank.run(5 * SECOND_MS, controls(true, false));
    EXPECT_NEAR(tank.level(), 40 + 5 * 6, 1e-9); // 1 litre is 1 % of 100 litres
    EXPECT_DOUBLE_EQ(tank.inflow(), 6);
}

// dL/dt = -8 sqrt(L / 100) has the solution sqrt(L) = sqrt(40) - 0.4 t.
TEST(TankTest, ValveDrawsInProportionToTheRootOfTheLevel)
{
    Tank tank;
    tank.run(5 * SECOND_MS, controls(false, true));
    const double root = std::sqrt(40.0) - 0.4 * 5;
    EXPECT_NEAR(tank.level(), root * root, 0.05);
}

// The level stays where 6 = 8 sqrt(L / 100).
TEST(TankTest, SettlesWhereInflowAndOutflowAreEqual)
{
    Tank tank;
    tank.run(10 * MINUTE_MS, controls(true, true));
    EXPECT_NEAR(tank.level(), 56.25, 0.01);
    EXPECT_NEAR(tank.outflow(), 6, 0.01);
}

TEST(TankTest, NeitherOverflowsNorRunsBelowEmpty)
{
    Tank full;
    full.run(MINUTE_MS, controls(true, false));
    EXPECT_DOUBLE_EQ(full.level(), 100);
    EXPECT_DOUBLE_EQ(full.inflow(), 0);
    Tank empty;
    empty.run(MINUTE_MS, controls(false, true));
    EXPECT_NEAR(empty.level(), 0, 1e-6);
    EXPECT_NEAR(empty.outflow(), 0, 1e-3);
}

TEST(TankTest, AlarmsGoOffAtAnotherLevelThanTheyComeOn)
{
    Tank tank;
    tank.run(8 * SECOND_MS, controls(true, false)); // 88 %
    EXPECT_FALSE(tank.isHigh());
    tank.run(SECOND_MS / 2, controls(true, false)); // 91 %
    EXPECT_TRUE(tank.isHigh());
    while (tank.level() > 86)
        tank.run(Tank::STEP_MS, controls(false, true));
    EXPECT_TRUE(tank.isHigh());
    while (tank.level() >= 85)
        tank.run(Tank::STEP_MS, controls(false, true));
    EXPECT_FALSE(tank.isHigh());
    while (tank.level() > 10.1)
        tank.run(Tank::STEP_MS, controls(false, true));
    EXPECT_FALSE(tank.isLow());
    while (tank.level() > 10)
        tank.run(Tank::STEP_MS, controls(false, true));
    EXPECT_TRUE(tank.isLow());
    while (tank.level() < 14.9)
        tank.run(Tank::STEP_MS, controls(true, false));
    EXPECT_TRUE(tank.isLow());
    tank.run(SECOND_MS, controls(true, false));
    EXPECT_FALSE(tank.isLow());
}

TEST(TankTest, ControllerHoldsTheSetpoint)
{
    Tank tank;
    Tank::Controls automatic = controls(false, true);
    automatic.automatic = true;
    automatic.setpoint = 30;
    for (int step = 0; step < MINUTE_MS; step += Tank::STEP_MS) {
        automatic.pump = tank.run(Tank::STEP_MS, automatic);
        if (step > 10 * SECOND_MS) {
            EXPECT_NEAR(tank.level(), 30, 2.2);
        }
    }
}

TEST(TankTest, SetpointOutsideTheTankIsItsLimit)
{
    Tank tank;
    Tank::Controls automatic = controls(true, false);
    automatic.automatic = true;
    automatic.setpoint = -std::numeric_limits<double>::infinity();
    EXPECT_FALSE(tank.run(SECOND_MS, automatic));
    automatic.setpoint = 1e30;
    EXPECT_TRUE(tank.run(SECOND_MS, automatic));
    automatic.setpoint = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(tank.run(SECOND_MS, automatic)) << "the last setpoint stays";
}

// However the time is cut into pieces, the tank is the same; and water is neither made nor lost.
TEST(TankTest, LevelFollowsTheWater)
{
    RandomSource random(1);
    for (int round = 0; round < 50; ++round) {
        Tank cut;
        Tank whole;
        double water = 40;
        for (int piece = 0; piece < 40; ++piece) {
            const Tank::Controls now = controls(random.oneIn(2), random.oneIn(2));
            const int steps = random.between(0, 300);
            for (int step = 0; step < steps; ++step) {
                cut.run(Tank::STEP_MS, now);
                water += (cut.inflow() - cut.outflow()) * Tank::STEP_MS / SECOND_MS;
                EXPECT_GE(cut.level(), 0);
                EXPECT_LE(cut.level(), 100);
            }
            whole.run(std::int64_t(steps) * Tank::STEP_MS, now);
            EXPECT_NEAR(cut.level(), water, 1e-6);
            EXPECT_DOUBLE_EQ(whole.level(), cut.level());
        }
    }
}

TEST(TankTest, RestOfAStepIsKept)
{
    Tank tank;
    for (int i = 0; i < 100; ++i)
        tank.run(Tank::STEP_MS / 2, controls(true, false));
    EXPECT_NEAR(tank.level(), 40 + 3, 1e-9); // half a second
}

TEST(TankTest, LongRunEndsSoon)
{
    Tank tank;
    tank.run(std::numeric_limits<std::int64_t>::max() / 2, controls(true, false));
    EXPECT_DOUBLE_EQ(tank.level(), 100);
}

// MW100 is register 3050 and MW104 register 3052; 60.0 is 0x42700000, 40.0 is 0x42200000 and 46.0
// is 0x42380000 in IEEE 754.
TEST(TankProgramTest, FollowsTheOperator)
{
    PlcMemory memory;
    TankProgram program;
    program.start(memory);
    EXPECT_EQ(memory.holdingRegister(3050), 0x4270);
    EXPECT_EQ(memory.holdingRegister(3051), 0);
    EXPECT_EQ(memory.holdingRegister(3052), 0x4220);
    EXPECT_EQ(memory.inputRegister(0), 400);
    memory.setCoil(0, true);
    program.runUntil(SECOND_MS, memory);
    EXPECT_EQ(memory.holdingRegister(3052), 0x4238);
    EXPECT_EQ(memory.inputRegister(0), 460);
    EXPECT_EQ(memory.inputRegister(1), 600);
    EXPECT_EQ(memory.inputRegister(2), 0);
    EXPECT_TRUE(memory.coil(0));
    memory.setCoil(0, false);
    memory.setCoil(1, true);
    program.runUntil(SECOND_MS + 100, memory);
    EXPECT_EQ(memory.inputRegister(1), 0);
    EXPECT_NEAR(memory.inputRegister(2), 800 * std::sqrt(0.46), 5);
}

TEST(TankProgramTest, ShowsItsAlarms)
{
    PlcMemory memory;
    TankProgram program;
    program.start(memory);
    EXPECT_EQ(memory.inputRegister(4), 0);
    memory.setCoil(0, true);
    program.runUntil(MINUTE_MS, memory);
    EXPECT_EQ(memory.inputRegister(4), 1); // IX8.0 is bit 0 of IW8
    memory.setCoil(0, false);
    memory.setCoil(1, true);
    program.runUntil(3 * MINUTE_MS, memory);
    EXPECT_EQ(memory.inputRegister(4), 2);
}

TEST(TankProgramTest, SwitchesThePumpInAutomaticMode)
{
    PlcMemory memory;
    TankProgram program;
    program.start(memory);
    memory.setCoil(3000, true);
    program.runUntil(100, memory);
    EXPECT_TRUE(memory.coil(0)) << "40 % is below the setpoint";
    memory.setHoldingRegister(3050, 0x41A0); // 20.0
    program.runUntil(200, memory);
    EXPECT_FALSE(memory.coil(0));
}
