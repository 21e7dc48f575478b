#include "layoutTable.h"

#include "bitsOfUnits.h"
#include "byteUnits.h"
#include "doubleWords.h"

static void markNothing(const VARIABLE_ELEMENTS&) {}
static void readNothing(const VARIABLE_ELEMENTS&, unsigned char*) {}
static void storeNothing(const VARIABLE_ELEMENTS&, const unsigned char*) {}
static void completeNothing(const VARIABLE_ELEMENTS&, bool) {}

/// In the order of UnitLayout, from NO_UNITS on. Areas of 8 bits are marked and read as BIT_UNIT
/// and written as BYTE_UNIT; double words in byte units are marked and read as BYTE_QUAD and
/// written as DOUBLE_UNIT.
static const LAYOUT_FUNCTIONS FUNCTIONS[] = {
    /* NO_UNITS */ {markNothing, readNothing, storeNothing, completeNothing},
    /* BYTE_UNIT */ {markNothing, readNothing, storeByteUnits, completeByteUnits},
    /* DOUBLE_UNIT */ {markDoubleUnits, readDoubleUnits, storeDoubleUnits, completeDoubleUnits},
    /* BYTE_PAIR */ {markBytePairs, readBytePairs, storeBytePairs, completeBytePairs},
    /* BYTE_QUAD */ {markByteQuads, readByteQuads, storeNothing, completeNothing},
    /* WORD_PAIR */ {markWordPairs, readWordPairs, storeWordPairs, completeWordPairs},
    /* BIT_OF_BYTE */ {markBitsOfBytes, readBitsOfBytes, storeBitsOfBytes, completeBitsOfBytes},
    /* BIT_OF_WORD */ {markBitsOfWords, readBitsOfWords, storeBitsOfWords, completeBitsOfWords},
};

const LAYOUT_FUNCTIONS& functionsOfLayout(UnitLayout layout)
{
    return FUNCTIONS[layout - NO_UNITS];
}
