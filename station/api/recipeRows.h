#ifndef RECIPE_ROWS_H
#define RECIPE_ROWS_H

#include "driver/driverLibrary.h"
#include "machine/recipeJob.h"

#include <QString>

/// The body of a request for a recipe: {"link","rows":[…],"verify":bool}.
struct RecipeBody
{
    QString link;
    RecipeRequest recipe;
};

/// Reads the body. A row is {"name","station","area","address","type","value"}, its texts as in a
/// recipe's file; `station` is a number and `value` as in a write, see writtenBytes(). An upload
/// needs no values, and ignores them.
///
/// All rows lie in areas that can be written, no two rows have one name, and no two rows share
/// memory.
/// @param driver  checks the addresses
/// @throws ApiError BAD_REQUEST for another form; UNPROCESSABLE with the first row that is wrong
RecipeBody recipeBodyOf(const QByteArray& body, RecipeRequest::Kind kind,
                        const DriverLibrary& driver);

/// Checks that a download writes only what a client may write one by one: each row has the station,
/// the place and the type of a tag with access `rw`.
/// @throws ApiError READ_ONLY with the first row that has not
void mustBeWritableTags(const std::vector<Tag>& rows, const std::vector<Tag>& tags);

#endif
