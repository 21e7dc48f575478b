#include "values/tagReading.h"

const char* qualityText(Quality quality)
{
    switch (quality) {
    case GOOD:
        return "good";
    case STALE:
        return "stale";
    case BAD:
        return "bad";
    }
    return "bad";
}
