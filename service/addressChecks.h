#ifndef ADDRESS_CHECKS_H
#define ADDRESS_CHECKS_H

#include "areaRow.h"

#include <QString>

/// The arguments of intf_checkAddr about one variable.
struct ADDRESS_QUESTION
{
    QString regName;
    QString addrText;
    int dataType;
    int count;
    int accessMode;
};

/// intf_checkAddr's verdict for an area with the given row.
int checkAddressOfArea(AreaRow row, const ADDRESS_QUESTION& question, int& outAddr);

#endif
