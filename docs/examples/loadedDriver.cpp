// Loads the driver as a panel does, by its file name, and prints which one it is.
// usage: loadedDriver FILE     with or without its folder and its suffix

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
    std::printf("version %s\n", qPrintable(version));
    return 0;
}
