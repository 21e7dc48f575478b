#include <quorvane_ka_kb_plc.h>

int main()
{
    int address = 0;
    const int result =
        intf_checkAddr(QLatin1String("MX"), QLatin1String("12.3"), address, -1, 1, 1);
    return result == ADDRESS_VALID && address == 3099 ? 0 : 1;
}
