#include "unitLayout.h"

#include "variableName.h"

static bool columnIs(AreaRow row, AreaColumn column, const char* text)
{
    return row[column] == QLatin1String(text);
}

static UnitLayout layoutOfBits(AreaRow row, const QString& regName)
{
    if (!namesBitOfUnit(regName)) return BIT_UNIT;
    if (columnIs(row, UNIT_BITS, "16")) return BIT_OF_WORD;
    if (columnIs(row, UNIT_BITS, "8")) return BIT_OF_BYTE;
    return NO_UNITS;
}

static UnitLayout layoutOfWords(AreaRow row)
{
    return columnIs(row, UNIT_BITS, "8") ? BYTE_PAIR : WORD_UNIT;
}

UnitLayout layoutForReading(AreaRow row, const QString& regName)
{
    if (columnIs(row, DATA_WIDTH, "16")) return layoutOfWords(row);
    if (columnIs(row, DATA_WIDTH, "1") || columnIs(row, DATA_WIDTH, "8"))
        return layoutOfBits(row, regName);
    if (!columnIs(row, DATA_WIDTH, "32")) return NO_UNITS;
    if (columnIs(row, UNIT_BITS, "8")) return BYTE_QUAD;
    return columnIs(row, UNIT_BITS, "16") ? WORD_PAIR : DOUBLE_UNIT;
}

UnitLayout layoutForWriting(AreaRow row, const QString& regName)
{
    if (columnIs(row, DATA_WIDTH, "1")) return layoutOfBits(row, regName);
    if (columnIs(row, DATA_WIDTH, "8")) return BYTE_UNIT;
    if (columnIs(row, DATA_WIDTH, "16")) return layoutOfWords(row);
    if (!columnIs(row, DATA_WIDTH, "32")) return NO_UNITS;
    return columnIs(row, UNIT_BITS, "16") ? WORD_PAIR : DOUBLE_UNIT;
}
