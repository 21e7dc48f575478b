#ifndef RECIPE_FILE_H
#define RECIPE_FILE_H

#include "driver/driverLibrary.h"
#include "plan/tagFile.h"

#include <vector>

/// A recipe: tags of areas that can be written, each with its value.
struct Recipe
{
    std::vector<Tag> tags;
    std::vector<QByteArray> values; ///< by tag, as intf_setData takes them; empty: none given
    QByteArray text;                ///< of the file that it was read from
};

/// Reads a recipe: a tag file with one more column, value, which may be empty when the recipe is
/// only to be uploaded.
///
///   name,station,area,address,type,value
///   level,1,MW,100,float32:high,12.5
///
/// @param valuesNeeded  a line without a value is bad
/// @throws TagFileError naming all bad lines at once, also when the file cannot be read
Recipe readRecipeFile(const QString& fileName, const DriverLibrary& driver, bool valuesNeeded);

/// Writes a recipe that readRecipeFile() has read: its text with the values that it has now, and
/// all else as it was. The file is replaced as a whole or not at all.
/// @throws TagFileError when it cannot be written
void writeRecipeFile(const QString& fileName, const Recipe& recipe);

#endif
