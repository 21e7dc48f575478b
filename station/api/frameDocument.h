#ifndef FRAME_DOCUMENT_H
#define FRAME_DOCUMENT_H

#include "session/frameGatherer.h"
#include "values/frameLog.h"
#include "values/jsonText.h"

/// A frame of the log as a gatherer takes it. Its time is in ms since 1970.
FrameRecord recordOf(const LoggedFrame& frame);

/// Appends a frame: {"time","direction":">"|"<","hex","meaning"}. `hex` has a blank between two
/// bytes.
void appendFrame(JsonText& json, const GatheredFrame& frame);

#endif
