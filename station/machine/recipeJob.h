#ifndef STATION_RECIPE_JOB_H
#define STATION_RECIPE_JOB_H

#include "plan/tag.h"

#include <QByteArray>

#include <functional>
#include <vector>

/// A recipe for one link, and what to do with it.
struct RecipeRequest
{
    enum Kind { DOWNLOAD, UPLOAD, COMPARE };

    Kind kind = DOWNLOAD;
    std::vector<Tag> rows;
    std::vector<QByteArray> values; ///< by row, in the format of intf_setData; not for an upload
    bool verify = false;            ///< a download is read back and compared
};

/// The one outcome of a recipe.
struct RecipeEnd
{
    enum Outcome { DONE, FAILED, DIFFERS };

    struct Difference
    {
        size_t row;
        QByteArray found;
    };

    quint64 id = 0;
    Outcome outcome = FAILED;
    QString block;  ///< of a failure: the block where it stopped, such as "MW100..MW222"
    QString reason; ///< of a failure, in words
    std::vector<Difference> differences; ///< of a comparison, or of a download with verification
    std::vector<QByteArray> values;      ///< of an upload that is done: by row
};

/// "download", "upload" or "compare".
const char* recipeKindText(RecipeRequest::Kind kind);

/// "done", "failed" or "differs".
const char* recipeOutcomeText(RecipeEnd::Outcome outcome);

/// Called once, from any thread: it must note the end and return.
using RecipeEnded = std::function<void(const RecipeEnd&)>;

#endif
