#ifndef BYTE_UNITS_H
#define BYTE_UNITS_H

#include "variableElements.h"

// Areas whose units are bytes. BYTE_UNIT: an element is one unit. BYTE_PAIR: a word in two
// neighbouring units. BYTE_QUAD: a double word in four; two counted elements make one.

void storeByteUnits(const VARIABLE_ELEMENTS& elements, const unsigned char* values);
void completeByteUnits(const VARIABLE_ELEMENTS& elements, bool confirmed);

/// Only the first pair is marked, however many there are.
void markBytePairs(const VARIABLE_ELEMENTS& elements);
void readBytePairs(const VARIABLE_ELEMENTS& elements, unsigned char* out);
void storeBytePairs(const VARIABLE_ELEMENTS& elements, const unsigned char* values);
void completeBytePairs(const VARIABLE_ELEMENTS& elements, bool confirmed);

void markByteQuads(const VARIABLE_ELEMENTS& elements);
void readByteQuads(const VARIABLE_ELEMENTS& elements, unsigned char* out);

#endif
