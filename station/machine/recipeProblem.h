#ifndef RECIPE_PROBLEM_H
#define RECIPE_PROBLEM_H

#include "machine/recipeJob.h"

/// Why a recipe is not begun, in words: no rows; a value that is missing, has not the bytes of its
/// type, or is nan or infinite, which a PLC that computes with it spreads to other values; a
/// download into memory that cannot be written. Empty: nothing speaks against it but rows that
/// share memory, see RecipePlan. The addresses of the rows are the caller's: they must exist.
QString recipeProblem(const RecipeRequest& request);

#endif
