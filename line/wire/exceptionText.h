#ifndef EXCEPTION_TEXT_H
#define EXCEPTION_TEXT_H

enum ExceptionCode { STILL_WORKING = 5, DEVICE_BUSY = 6 };

/// True for STILL_WORKING and DEVICE_BUSY. The station does not object to the request itself, so
/// the same request may succeed later.
bool isAskedAgain(int code);

/// An exception code, 0 to 255, in words (MODBUS Application Protocol V1.1b3, 7).
const char* exceptionText(int code);

#endif
