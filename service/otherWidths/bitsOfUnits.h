#ifndef BITS_OF_UNITS_H
#define BITS_OF_UNITS_H

#include "variableElements.h"

// Variables with the suffix "_bit": one bit of a byte unit (BIT_OF_BYTE) or of a word unit
// (BIT_OF_WORD). The address counts bits: bit a is bit a mod 8 (or 16) of unit a / 8 (or 16). Both
// are truncated toward zero, so a negative address may give a bit number below 0, which names no
// bit.
//
// A unit is pending while one of its bits is. _DATA_::pendingBitWrites counts the writes of each
// bit: bit 2b stands for the first write of bit b, bit 2b + 1 for a second one behind it.

void markBitsOfBytes(const VARIABLE_ELEMENTS& elements);
void readBitsOfBytes(const VARIABLE_ELEMENTS& elements, unsigned char* out);
void storeBitsOfBytes(const VARIABLE_ELEMENTS& elements, const unsigned char* values);
void completeBitsOfBytes(const VARIABLE_ELEMENTS& elements, bool confirmed);

void markBitsOfWords(const VARIABLE_ELEMENTS& elements);
void readBitsOfWords(const VARIABLE_ELEMENTS& elements, unsigned char* out);
void storeBitsOfWords(const VARIABLE_ELEMENTS& elements, const unsigned char* values);
void completeBitsOfWords(const VARIABLE_ELEMENTS& elements, bool confirmed);

#endif
