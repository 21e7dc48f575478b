#ifndef DOUBLE_WORDS_H
#define DOUBLE_WORDS_H

#include "variableElements.h"

// Areas of 32-bit elements. DOUBLE_UNIT: an element is one unit of four bytes. WORD_PAIR: the low
// word in one unit and the high word in the next. Marking and reading count an element as two,
// storing and completing as one.

void markDoubleUnits(const VARIABLE_ELEMENTS& elements);
void readDoubleUnits(const VARIABLE_ELEMENTS& elements, unsigned char* out);
void storeDoubleUnits(const VARIABLE_ELEMENTS& elements, const unsigned char* values);
void completeDoubleUnits(const VARIABLE_ELEMENTS& elements, bool confirmed);

void markWordPairs(const VARIABLE_ELEMENTS& elements);
void readWordPairs(const VARIABLE_ELEMENTS& elements, unsigned char* out);
void storeWordPairs(const VARIABLE_ELEMENTS& elements, const unsigned char* values);
void completeWordPairs(const VARIABLE_ELEMENTS& elements, bool confirmed);

#endif
