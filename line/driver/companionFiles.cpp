#include "driver/companionFiles.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

namespace {

QString besideProgram(const char* name)
{
    return QDir(QCoreApplication::applicationDirPath()).absoluteFilePath(QLatin1String(name));
}

} // namespace

QString companionDriver()
{
    // The driver lies at the top of a build tree, and in the folder for this program's version of
    // Qt of an installed tree. The name in the library folder may lead to the driver of another Qt.
    for (const char* name :
         {"../libquorvane_ka_kb_plc.so", "../" KAKB_DRIVER_FOLDER "/libquorvane_ka_kb_plc.so"}) {
        const QString file = besideProgram(name);
        if (QFile::exists(file)) return file;
    }
    return QString(QLatin1String("quorvane_ka_kb_plc"));
}

QString companionSimulator()
{
    return besideProgram("kakb-sim");
}

QString companionTagFile()
{
    return QDir::cleanPath(besideProgram("../" KAKB_DATA_FOLDER "/tags.csv"));
}
