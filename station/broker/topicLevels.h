#ifndef TOPIC_LEVELS_H
#define TOPIC_LEVELS_H

#include <QString>

#include <vector>

/// The levels of topics that stand for names, in the order of the names. No two of them are alike,
/// not even without regard to case, since some programs take such ids for one.
///
/// What no level can hold becomes an underscore: + / # and the characters that MQTT refuses. A
/// level that is taken gets a number: "a_b", "a_b-2". Names that need no change are served first,
/// so that another name never takes a level from them.
/// @param names  no two alike
std::vector<QString> topicLevels(const std::vector<QString>& names);

/// The level of a name that stands alone.
QString topicLevel(const QString& name);

#endif
