#ifndef PLANT_METRICS_H
#define PLANT_METRICS_H

#include "api/openMetricsText.h"
#include "plant/plantStanding.h"

#include <vector>

/// Adds the families kakb_mqtt_..., one sample for each dialect.
void addPlantMetrics(OpenMetricsText& text, const std::vector<PlantStanding>& standings);

#endif
