#ifndef REGISTER_TABLES_H
#define REGISTER_TABLES_H

#include "areaRow.h"

#include <QLatin1String>
#include <QString>

// The device's register areas and the driver's identity, as constants.
//
// Only quorvane_ka_kb_plc.cpp and serviceForProtocol.cpp include this file: each of the two units
// owns one copy of the tables, built before anything of that unit can run, so that neither depends
// on the other's load order. Every other file asks its unit for a row.

/// The position of a name here is the area's index everywhere in the driver.
static const QString REG_LIST[AREA_COUNT] = {
    QLatin1String("MW"), QLatin1String("IW"), QLatin1String("QW"),
    QLatin1String("MX"), QLatin1String("IX"), QLatin1String("QX"),
};

/// Row i describes area i; the last row, all empty, stands for every unknown name.
static const QString ADDRESS_RANGE_PRO[AREA_COUNT + 1][AREA_COLUMN_COUNT] = {
    {QLatin1String("DDDD"), QLatin1String("0"), QLatin1String("8190"), QLatin1String("16"),
     QLatin1String("RW"), QLatin1String("16")},
    {QLatin1String("DDDD"), QLatin1String("0"), QLatin1String("510"), QLatin1String("16"),
     QLatin1String("R"), QLatin1String("16")},
    {QLatin1String("DDDD"), QLatin1String("0"), QLatin1String("510"), QLatin1String("16"),
     QLatin1String("RW"), QLatin1String("16")},
    {QLatin1String("DDDDO"), QLatin1String("0.0"), QLatin1String("7816.7"), QLatin1String("1"),
     QLatin1String("RW"), QLatin1String("1")},
    {QLatin1String("DDDDO"), QLatin1String("0.0"), QLatin1String("511.7"), QLatin1String("1"),
     QLatin1String("R"), QLatin1String("1")},
    {QLatin1String("DDDDO"), QLatin1String("0.0"), QLatin1String("511.7"), QLatin1String("1"),
     QLatin1String("RW"), QLatin1String("1")},
    {QLatin1String(""), QLatin1String(""), QLatin1String(""), QLatin1String(""), QLatin1String(""),
     QLatin1String("")},
};

// The spelling of these names is the interface's own.
static const QString PROCOTOL_NAME = QLatin1String("quorvane_ka_kb_plc");
static const QString PROCOTOL_VERSION = QLatin1String("2.0.0.0");
/// baud rate, data bits, parity, stop bits
static const QString PROCOTOL_DEFALT_COM_PAR = QLatin1String("38400,8,NONE,1");
/// address, port
static const QString PROCOTOL_DEFALT_IP_PAR = QLatin1String("192.168.1.100,8000");
static const QString PROCOTOL_PAR_HMI_SET_MODE = QLatin1String("0_0");

/// Index of an area by its exact name; AREA_COUNT, the empty row, when there is none.
static inline int indexInRegList(const QString& regName)
{
    int index = 0;
    while (index < AREA_COUNT && REG_LIST[index] != regName)
        ++index;
    return index;
}

#endif
