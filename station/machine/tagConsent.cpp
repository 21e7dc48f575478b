#include "machine/tagConsent.h"

#include "plan/tagText.h"

bool isWritable(const Tag& tag, bool areWritesAllowed)
{
    return areWritesAllowed && tag.access == Tag::READ_WRITE;
}

QString stationConsentProblem(bool areWritesAllowed)
{
    if (areWritesAllowed) return QString();
    return QLatin1String("this station writes nothing: it runs without --allow-writes");
}

QString tagConsentProblem(const Tag& tag, bool areWritesAllowed)
{
    if (isWritable(tag, areWritesAllowed)) return QString();
    if (!areWritesAllowed) return stationConsentProblem(areWritesAllowed);
    return QString(QLatin1String("tag %1 is read-only")).arg(quoted(tag.name));
}
