#ifndef EXCEPTION_TEXT_H
#define EXCEPTION_TEXT_H

enum ExceptionCode { DEVICE_FAILURE = 4, STILL_WORKING = 5, DEVICE_BUSY = 6, TARGET_SILENT = 11 };

/// True for STILL_WORKING and DEVICE_BUSY. The station does not object to the request itself, so
/// the same request may succeed later.
bool isAskedAgain(int code);

/// True for an exception that does not rule out that the station executed the request: it failed on
/// the way (4), it is still at work (5), or the station behind a gateway did not answer (11).
bool leavesOpen(int code);

/// An exception code, 0 to 255, in words (MODBUS Application Protocol V1.1b3, 7).
const char* exceptionText(int code);

#endif
