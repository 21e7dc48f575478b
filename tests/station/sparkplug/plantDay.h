#ifndef PLANT_DAY_H
#define PLANT_DAY_H

#include "edgeBench.h"

#include <gtest/gtest.h>

/// Everything that an edge node told its brokers on a day with all that happens to one: a broker
/// that is not there, a primary host that goes offline, more messages than seq can count, stations
/// that fall silent, rebirths, commands, garbage, a cut with history behind it, a new configuration
/// and a clean end.
const std::vector<Told>& plantDay();

// Which messages a rule is about.
bool isConnect(const Told& told);
bool isNodeBirth(const Told& told);
bool isDeviceBirth(const Told& told);
bool isBirth(const Told& told);
bool isNodeData(const Told& told);
bool isDeviceData(const Told& told);
bool isData(const Told& told);
bool isDeviceDeath(const Told& told);
bool isNodeDeath(const Told& told);    ///< sent
bool isAnyNodeDeath(const Told& told); ///< sent, or a will
bool isNumbered(const Told& told);     ///< everything with seq
bool isSparkplug(const Told& told);

/// Looks at each such message of the day; there must be one.
void everyOne(bool (*which)(const Told&), void (*check)(const Told&));

/// A rule that each message of a kind keeps by itself.
#define KEPT(rule, which, check)                                                                   \
    TEST(Sparkplug, rule)                                                                          \
    {                                                                                              \
        everyOne(which, check);                                                                    \
    }

// What a message keeps.
void isQos0Unretained(const Told& told);
void isQos0(const Told& told);
void isUnretained(const Told& told);
void isReadable(const Told& told);
void hasTimeOfSending(const Told& told);
void hasSeq(const Told& told);

/// The seq of each message is that of the one before plus 1; looks at those of one kind.
void isNextSeq(bool (*which)(const Told&));

#define COUNTED(rule, which)                                                                       \
    TEST(Sparkplug, rule)                                                                          \
    {                                                                                              \
        isNextSeq(which);                                                                          \
    }

#endif
