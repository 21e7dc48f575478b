#ifndef RECIPE_JOBS_H
#define RECIPE_JOBS_H

#include "plan/recipePlan.h"
#include "session/recipeTransfers.h"

/// The bytes of a word as the driver holds them, low byte first.
inline QByteArray wordBytes(int value)
{
    QByteArray bytes(2, '\0');
    bytes[0] = static_cast<char>(value & 255);
    bytes[1] = static_cast<char>(value >> 8);
    return bytes;
}

inline RecipeJob download(int job, const std::vector<Tag>& tags,
                          const std::vector<QByteArray>& values)
{
    const RecipePlan plan(tags, StartedDriver::LINK_NUMBER);
    RecipeJob recipe;
    recipe.job = job;
    recipe.flag = RECIPE_DOWNLOAD_FLAG;
    recipe.records = plan.downloadRecords();
    recipe.values = plan.buffer(values);
    return recipe;
}

inline RecipeJob upload(int job, const std::vector<Tag>& tags)
{
    const RecipePlan plan(tags, StartedDriver::LINK_NUMBER);
    RecipeJob recipe;
    recipe.job = job;
    recipe.flag = RECIPE_UPLOAD_FLAG;
    recipe.records = plan.uploadRecords();
    recipe.values = QByteArray(plan.bufferBytes(), '\0');
    return recipe;
}

#endif
