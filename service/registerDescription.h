#ifndef REGISTER_DESCRIPTION_H
#define REGISTER_DESCRIPTION_H

#include "areaRow.h"

#include <QStringList>

/// Appends format, lowest and highest address, width code and access code of an area's row.
void describeRow(AreaRow row, QStringList& out);

#endif
