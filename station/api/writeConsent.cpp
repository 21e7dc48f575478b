#include "api/writeConsent.h"

#include "api/apiError.h"
#include "api/valueDocument.h"
#include "plan/tagText.h"

void mustAllowWrites(const StationParts& parts)
{
    if (parts.areWritesAllowed) return;
    throw ApiError(ApiError::READ_ONLY,
                   QLatin1String("this station writes nothing: it runs without --allow-writes"));
}

void mustBeWritable(const Tag& tag, const StationParts& parts)
{
    mustAllowWrites(parts);
    if (isWritable(tag, true)) return;
    throw ApiError(ApiError::READ_ONLY,
                   QString(QLatin1String("tag %1 is read-only")).arg(quoted(tag.name)));
}
