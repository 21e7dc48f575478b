#include "api/writeConsent.h"

#include "api/apiError.h"
#include "machine/tagConsent.h"

namespace {

void mustHaveNo(const QString& problem)
{
    if (!problem.isEmpty()) throw ApiError(ApiError::READ_ONLY, problem);
}

} // namespace

void mustAllowWrites(const StationParts& parts)
{
    mustHaveNo(stationConsentProblem(parts.areWritesAllowed));
}

void mustBeWritable(const Tag& tag, const StationParts& parts)
{
    mustHaveNo(tagConsentProblem(tag, parts.areWritesAllowed));
}
