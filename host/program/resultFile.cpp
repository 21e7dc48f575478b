#include "program/resultFile.h"

#include "output/writtenFile.h"
#include "program/exitStatus.h"
#include "program/interrupt.h"

void writeResult(const QString& fileName, const QByteArray& bytes)
{
    try {
        writeFile(fileName, bytes, isToEnd);
    } catch (const WriteError& error) {
        throw VerbFailure(isToEnd() ? EXIT_INTERRUPTED : EXIT_USAGE,
                          QString(QLatin1String("cannot write %1: %2"))
                              .arg(fileName, QString::fromLocal8Bit(error.what())));
    }
}
