#include "plant/plantStanding.h"

const char* plantStateText(PlantStanding::State state)
{
    switch (state) {
    case PlantStanding::PAUSING:
        return "pausing";
    case PlantStanding::CONNECTING:
        return "connecting";
    case PlantStanding::BORN:
        return "connected";
    }
    return "";
}
