#include "machine/recipeJob.h"
#include "machine/writeEnd.h"

const char* writeOutcomeText(WriteEnd::Outcome outcome)
{
    switch (outcome) {
    case WriteEnd::CONFIRMED:
        return "confirmed";
    case WriteEnd::REFUSED:
        return "refused";
    case WriteEnd::FAILED:
        return "failed";
    }
    return "failed";
}

void writeOutcome(JsonText& json, WriteEnd::Outcome outcome, const QString& reason)
{
    json.key("outcome").word(writeOutcomeText(outcome)).key("reason").textOrNull(reason);
}

const char* recipeKindText(RecipeRequest::Kind kind)
{
    switch (kind) {
    case RecipeRequest::DOWNLOAD:
        return "download";
    case RecipeRequest::UPLOAD:
        return "upload";
    case RecipeRequest::COMPARE:
        return "compare";
    }
    return "download";
}

const char* recipeOutcomeText(RecipeEnd::Outcome outcome)
{
    switch (outcome) {
    case RecipeEnd::DONE:
        return "done";
    case RecipeEnd::FAILED:
        return "failed";
    case RecipeEnd::DIFFERS:
        return "differs";
    }
    return "failed";
}
