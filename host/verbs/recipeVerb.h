#ifndef RECIPE_VERB_H
#define RECIPE_VERB_H

#include "program/hostProgram.h"

struct RecipeOptions
{
    QString file;
    QString output; ///< file for an upload, see writtenFile.h; its own file is a good choice
    bool verify = false;
    bool allowsNan = false; ///< a download may write nan, inf and -inf
};

/// Writes the recipe's values into the PLC. With `verify` it reads the values back and names each
/// value that differs.
/// @throws TagFileError, RecipeError, VerbFailure
ExitStatus downloadRecipe(const DriverLibrary& driver, const LinkOptions& options,
                          const RecipeOptions& recipe);

/// Reads the recipe's values from the PLC into a file. With `verify` it reads the values twice and
/// names each value that differs.
/// @throws TagFileError, RecipeError, VerbFailure
ExitStatus uploadRecipe(const DriverLibrary& driver, const LinkOptions& options,
                        const RecipeOptions& recipe);

#endif
