#ifndef EXCEPTION_TEXT_H
#define EXCEPTION_TEXT_H

enum ExceptionCode { STILL_WORKING = 5, DEVICE_BUSY = 6 };

/// The code says nothing against the request itself: it is worth asking again later.
bool isAskedAgain(int code);

/// An exception code in words (MODBUS Application Protocol V1.1b3, 7).
const char* exceptionText(int code);

#endif
