#ifndef RECIPE_VERB_H
#define RECIPE_VERB_H

#include "program/hostProgram.h"

struct RecipeOptions
{
    QString file;
    QString output; ///< where an upload goes; empty: into the file itself
    bool verify = false;
};

/// Writes the recipe's values into the PLC. With verify they are read back, and each that differs
/// is named. Throws TagFileError, RecipeError, VerbFailure.
ExitStatus downloadRecipe(const DriverLibrary& driver, const LinkOptions& options,
                          const RecipeOptions& recipe);

/// Reads the recipe's values from the PLC into its file. With verify they are read twice, and each
/// that differs is named.
ExitStatus uploadRecipe(const DriverLibrary& driver, const LinkOptions& options,
                        const RecipeOptions& recipe);

#endif
