#ifndef LOGGED_FRAMES_H
#define LOGGED_FRAMES_H

#include "session/frameGatherer.h"
#include "values/frameLog.h"

#include <QByteArray>

#include <vector>

/// The frames of a link's log, gathered, oldest first; their times are in ms since 1970. Bytes at
/// its begin whose request is no longer in the log are left out, and so are received bytes at its
/// end that are no answer yet.
std::vector<GatheredFrame> gatheredFrames(const FrameLog& log);

/// A capture file of frames: what `kakb-host --pcap` writes, see framePacket().
QByteArray captureOf(const std::vector<GatheredFrame>& frames);

#endif
