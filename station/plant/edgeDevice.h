#ifndef EDGE_DEVICE_H
#define EDGE_DEVICE_H

#include "plan/tag.h"

#include <QString>

#include <vector>

/// One station of one link, as programs outside see it.
struct EdgeDevice
{
    QString link;
    int station = 1;
    std::vector<Tag> tags; ///< of this station alone
};

#endif
