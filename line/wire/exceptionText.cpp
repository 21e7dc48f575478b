#include "wire/exceptionText.h"

bool isAskedAgain(int code)
{
    return code == STILL_WORKING || code == DEVICE_BUSY;
}

bool leavesOpen(int code)
{
    return code == DEVICE_FAILURE || code == STILL_WORKING || code == TARGET_SILENT;
}

const char* exceptionText(int code)
{
    switch (code) {
    case 1:
        return "illegal function";
    case 2:
        return "illegal address";
    case 3:
        return "illegal value";
    case DEVICE_FAILURE:
        return "device failure";
    case STILL_WORKING:
        return "acknowledged, still working";
    case DEVICE_BUSY:
        return "device busy";
    case 8:
        return "memory parity error";
    case 10:
        return "gateway path unavailable";
    case TARGET_SILENT:
        return "gateway target does not respond";
    default:
        return "unknown exception";
    }
}
