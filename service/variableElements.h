#ifndef VARIABLE_ELEMENTS_H
#define VARIABLE_ELEMENTS_H

#include "variableName.h"

#include <QString>

/// The elements of one variable that a call of the host marks, reads or writes.
struct VARIABLE_ELEMENTS
{
    int station;
    QString regName; ///< as the host names the variable, with its suffix
    QString area;    ///< without the suffix: the name that the cached units have
    int addr;        ///< in the variable's own unit
    int count;
};

inline VARIABLE_ELEMENTS variableElements(int station, const QString& regName, int addr, int count)
{
    const VARIABLE_ELEMENTS elements = {station, regName, areaPart(regName), addr, count};
    return elements;
}

#endif
