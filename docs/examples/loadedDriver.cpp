// Loads the driver by its file name, as a panel does, and prints the driver's interface version.
// usage: loadedDriver FILE     FILE may omit the folder and the suffix

#include "quorvane_ka_kb_plc.h"

#include <QLibrary>

#include <cstdio>

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: loadedDriver FILE\n");
        return 1;
    }
    QLibrary library(QString::fromLocal8Bit(argv[1]));
    const auto getVersion =
        reinterpret_cast<decltype(&intf_getVersion)>(library.resolve("intf_getVersion"));
    if (getVersion == nullptr) {
        std::fprintf(stderr, "%s\n", qPrintable(library.errorString()));
        return 2;
    }
    QString version;
    getVersion(&version);
    std::printf("interface version %s\n", qPrintable(version));
    return 0;
}
