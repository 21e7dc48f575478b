#ifndef RECIPE_FILE_H
#define RECIPE_FILE_H

#include "driver/driverLibrary.h"
#include "plan/tagFile.h"

#include <vector>

/// A recipe: tags in writable areas, and their values.
struct Recipe
{
    std::vector<Tag> tags;
    std::vector<QByteArray> values; ///< by tag, in the format of intf_setData; empty: no value
    QByteArray text;                ///< of the recipe's file
};

/// A download needs a value in every line, and refuses nan and infinite values unless it is told
/// otherwise. An upload needs no values, because it replaces them.
enum RecipeUse { FOR_UPLOAD, FOR_DOWNLOAD, FOR_DOWNLOAD_WITH_NAN };

/// Reads a recipe: a tag file with the further column `value`.
///
///   name,station,area,address,type,value
///   level,1,MW,100,float32:high,12.5
///
/// @throws TagFileError with all bad lines, or when the file cannot be read
Recipe readRecipeFile(const QString& fileName, const DriverLibrary& driver, RecipeUse use);

/// The text of the recipe's file with the recipe's values; all other text is kept.
QByteArray recipeText(const Recipe& recipe);

#endif
