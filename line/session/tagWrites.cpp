#include "session/tagWrites.h"

#include "plan/recipePlan.h"

namespace {

enum { BYTES_PER_WORD = 2 };

} // namespace

std::vector<ElementWrite> elementWrites(const Tag& tag, const QByteArray& bytes,
                                        const QString& label)
{
    std::vector<ElementWrite> elements;
    const int size = tag.isBit() ? 1 : int(BYTES_PER_WORD);
    for (int unit = 0; unit < tag.units(); ++unit) {
        ElementWrite write;
        write.station = tag.station;
        write.area = tag.area;
        write.number = tag.number + unit;
        write.bytes = bytes.mid(unit * size, size);
        write.label = label;
        elements.push_back(write);
    }
    return elements;
}

RecipeJob oneFrameWrite(int job, const std::vector<Tag>& tags,
                        const std::vector<QByteArray>& values)
{
    const RecipePlan plan(tags, StartedDriver::LINK_NUMBER);
    RecipeJob recipe;
    recipe.job = job;
    recipe.kind = RecipeJob::TAG_WRITE;
    recipe.flag = RECIPE_DOWNLOAD_FLAG;
    recipe.records = plan.downloadRecords();
    recipe.values = plan.buffer(values);
    return recipe;
}
