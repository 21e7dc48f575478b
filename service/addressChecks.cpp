#include "addressChecks.h"

#include "addressCodec.h"
#include "quorvane_ka_kb_plc.h"
#include "serviceForProtocol.h"

enum { BIT_VARIABLE = -1, WORD_BITS = 16 };

static bool kindsAgree(AreaRow row, bool bitVariable)
{
    return (row[DATA_WIDTH] == QLatin1String("1")) == bitVariable;
}

static bool isWrittenTo(int accessMode)
{
    return accessMode == 1 || accessMode == 2;
}

/// The host's data types that fit a 32-bit unit.
static bool isAllowedOn32Bits(int dataType)
{
    return dataType == 1 || dataType == 3 || dataType == 5 || dataType == 6 || dataType == 9;
}

/// The last unit, address + count - 1, must not pass the maximum. The test is in floating point,
/// because a unit wider than a word makes the count a fraction.
static bool isInRange(int address, int count, double wordsPerUnit, int minimum, int maximum)
{
    return address >= minimum && address + count / wordsPerUnit <= maximum + 1.0;
}

/// Converts the text and tests it against the area's range.
static int checkRange(AreaRow row, const QString& regName, const QString& addrText,
                      bool bitVariable, int count, int& outAddr)
{
    if (a2i(addrText, outAddr, row[FORMAT], regName) == -1) return ADDRESS_OUT_OF_RANGE;
    int maximum = 0;
    int minimum = 0;
    a2i(row[MAX_TEXT], maximum, row[FORMAT], regName);
    a2i(row[MIN_TEXT], minimum, row[FORMAT], regName);
    const int unitBits = bitVariable ? int(WORD_BITS) : row[UNIT_BITS].toInt();
    if (!isInRange(outAddr, count, double(unitBits) / double(WORD_BITS), minimum, maximum))
        return ADDRESS_OUT_OF_RANGE;
    outAddr = addrOffset(regName, outAddr);
    return ADDRESS_VALID;
}

/// An unknown area is first tested like an area of one unit at 0.
static int checkUnknownArea(int outAddr, int count)
{
    return isInRange(outAddr, count, 1.0, 0, 0) ? ADDRESS_UNKNOWN_AREA : ADDRESS_OUT_OF_RANGE;
}

int checkAddressOfArea(AreaRow row, const ADDRESS_QUESTION& question, int& outAddr)
{
    const bool bitVariable = question.dataType == BIT_VARIABLE;
    if (!kindsAgree(row, bitVariable)) return ADDRESS_KIND_MISMATCH;
    if (row[ACCESS] == QLatin1String("R") && isWrittenTo(question.accessMode))
        return ADDRESS_READ_ONLY;
    if (row[DATA_WIDTH] == QLatin1String("32") && !isAllowedOn32Bits(question.dataType))
        return ADDRESS_TYPE_NOT_ALLOWED;
    return checkRange(row, question.regName, question.addrText, bitVariable, question.count,
                      outAddr);
}

int intf_checkAddr(QString regName, QString addrText, int& outAddr, int dataType, int count,
                   int accessMode)
{
    const int index = areaIndex(regName);
    if (index == AREA_COUNT) return checkUnknownArea(outAddr, count);
    const ADDRESS_QUESTION question = {regName, addrText, dataType, count, accessMode};
    return checkAddressOfArea(areaRow(index), question, outAddr);
}

int intf_checkAddrValidity(QString regName, QString addrText, int& outAddr, int count, int isWord)
{
    const int index = areaIndex(regName);
    if (index == AREA_COUNT) return checkUnknownArea(outAddr, count);
    const AreaRow row = areaRow(index);
    if (!kindsAgree(row, isWord == 0)) return ADDRESS_KIND_MISMATCH;
    return checkRange(row, regName, addrText, isWord == 0, count, outAddr);
}
