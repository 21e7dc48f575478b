#ifndef BUILT_REQUESTS_H
#define BUILT_REQUESTS_H

#include "driverFixture.h"
#include "requestFrames.h"

#include <cstring>

/// Takes the only frame off the driver's queue.
inline FRAME_PRO takeOnlyFrame()
{
    EXPECT_EQ(1, int(driver.frameQueue.size()));
    const FRAME_PRO frame = driver.frameQueue.isEmpty() ? FRAME_PRO() : driver.frameQueue.at(0);
    driver.frameQueue.clear();
    return frame;
}

inline FRAME_PRO readRequestFor(const VARIABLE& wanted)
{
    driver.frameQueue.clear();
    EXPECT_EQ(1, getReadFrame(QList<VARIABLE>() << wanted));
    return takeOnlyFrame();
}

inline FRAME_PRO writeRequestFor(const VARIABLE& written)
{
    driver.frameQueue.clear();
    getWriteFrame(written);
    return takeOnlyFrame();
}

inline void expectSameVariable(const VARIABLE& expected, const VARIABLE& actual)
{
    EXPECT_EQ(expected.varId, actual.varId);
    EXPECT_EQ(expected.station, actual.station);
    EXPECT_EQ(expected.regName.toStdString(), actual.regName.toStdString());
    EXPECT_EQ(expected.addr, actual.addr);
    EXPECT_EQ(expected.count, actual.count);
    EXPECT_EQ(0, std::memcmp(expected.value, actual.value, sizeof expected.value));
}

#endif
