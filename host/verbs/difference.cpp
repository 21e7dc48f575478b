#include "verbs/difference.h"

#include "output/changeLines.h"
#include "plan/tagValue.h"
#include "plan/typedAddress.h"
#include "program/printing.h"
#include "verbs/tagChoice.h"

void printDifference(const Tag& tag, const QByteArray& expected, const QByteArray& found, bool json)
{
    const QString expectedText = tagValueText(tag, expected);
    const QString foundText = tagValueText(tag, found);
    if (!json)
        return printLine(stdout, QString(QLatin1String("%1 is %2, not %3"))
                                     .arg(labelText(tag), foundText, expectedText));
    QJsonObject object;
    object.insert(QLatin1String("name"), tag.name);
    object.insert(QLatin1String("address"), placeText(tag));
    object.insert(QLatin1String("expected"), jsonValue(expectedText));
    object.insert(QLatin1String("found"), jsonValue(foundText));
    printObject(stdout, object);
}
