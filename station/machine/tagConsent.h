#ifndef TAG_CONSENT_H
#define TAG_CONSENT_H

#include "plan/tag.h"

#include <QString>

// Whoever asks from outside writes only with two consents: that of the station, and that of the
// tag.

/// Whether a client may write the tag.
/// @param areWritesAllowed  in the whole station
bool isWritable(const Tag& tag, bool areWritesAllowed);

/// Why clients must not write anything, in words; empty: they may.
QString stationConsentProblem(bool areWritesAllowed);

/// Why clients must not write the tag, in words; empty: they may.
QString tagConsentProblem(const Tag& tag, bool areWritesAllowed);

#endif
