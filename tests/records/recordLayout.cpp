// Prints where the fields of the records lie in this build, as lines "RECORD FIELD OFFSET SIZE";
// the whole record is the field "all". The first line is the size of a text.

#include "quorvane_ka_kb_plc.h"

#include <cstddef>
#include <cstdio>

#define PRINT_FIELD(record, field)                                                                 \
    std::printf(#record " " #field " %zu %zu\n", offsetof(record, field), sizeof(record::field))

int main()
{
    std::printf("QString all 0 %zu\n", sizeof(QString));
    PRINT_FIELD(VARIABLE, varId);
    PRINT_FIELD(VARIABLE, station);
    PRINT_FIELD(VARIABLE, regName);
    PRINT_FIELD(VARIABLE, addr);
    PRINT_FIELD(VARIABLE, count);
    PRINT_FIELD(VARIABLE, value);
    std::printf("VARIABLE all 0 %zu\n", sizeof(VARIABLE));
    PRINT_FIELD(FRAME_PRO, sendBuf);
    PRINT_FIELD(FRAME_PRO, sendLen);
    PRINT_FIELD(FRAME_PRO, recvLen);
    PRINT_FIELD(FRAME_PRO, dataStart);
    PRINT_FIELD(FRAME_PRO, itemCount);
    PRINT_FIELD(FRAME_PRO, spare);
    PRINT_FIELD(FRAME_PRO, var);
    std::printf("FRAME_PRO all 0 %zu\n", sizeof(FRAME_PRO));
    PRINT_FIELD(KEY_ADDRESS, label);
    PRINT_FIELD(KEY_ADDRESS, param1);
    PRINT_FIELD(KEY_ADDRESS, param2);
    PRINT_FIELD(KEY_ADDRESS, station);
    PRINT_FIELD(KEY_ADDRESS, regName);
    PRINT_FIELD(KEY_ADDRESS, typeText);
    PRINT_FIELD(KEY_ADDRESS, addr);
    PRINT_FIELD(KEY_ADDRESS, unitMode);
    PRINT_FIELD(KEY_ADDRESS, count);
    PRINT_FIELD(KEY_ADDRESS, data);
    std::printf("KEY_ADDRESS all 0 %zu\n", sizeof(KEY_ADDRESS));
    PRINT_FIELD(_RCP_VAR_PRO, linkNo);
    PRINT_FIELD(_RCP_VAR_PRO, station);
    PRINT_FIELD(_RCP_VAR_PRO, regName);
    PRINT_FIELD(_RCP_VAR_PRO, addr);
    PRINT_FIELD(_RCP_VAR_PRO, count);
    PRINT_FIELD(_RCP_VAR_PRO, bufOffset);
    PRINT_FIELD(_RCP_VAR_PRO, spare);
    std::printf("_RCP_VAR_PRO all 0 %zu\n", sizeof(_RCP_VAR_PRO));
    return 0;
}
