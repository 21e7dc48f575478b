#ifndef CONFIG_PLANT_H
#define CONFIG_PLANT_H

#include "plant/plantSettings.h"
#include "program/configMistakes.h"
#include "program/configNode.h"
#include "program/stationConfig.h"
#include "program/stationOptions.h"

/// Reads the table [mqtt] of a configuration.
/// @param folder  at which the paths of the configuration begin
PlantSettings configuredPlant(const ConfigNode& table, const QString& folder,
                              ConfigMistakes& mistakes);

/// Puts the options in the place of the keys.
void replacePlantKeys(PlantSettings& settings, const StationOptions& options);

/// Why a text is no Sparkplug id, in words; empty: it is one. An id has some text, no control
/// character, and none of + / #.
QString plantIdProblem(const QString& id);

/// The dialects of a text such as "sparkplug,json".
/// @return the problem in words; empty: none
QString takeDialects(const QStringList& names, PlantSettings& settings);

/// What only the file and the options together show. Reads the password.
void checkPlant(StationConfig& config, ConfigMistakes& mistakes);

#endif
