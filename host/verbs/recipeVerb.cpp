#include "verbs/recipeVerb.h"

#include "plan/recipeFile.h"
#include "plan/recipePlan.h"
#include "plan/tagValue.h"
#include "verbs/tagChoice.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace {

std::vector<Tag> bitTags(const std::vector<Tag>& tags)
{
    std::vector<Tag> bits;
    std::copy_if(tags.begin(), tags.end(), std::back_inserter(bits),
                 [](const Tag& tag) { return tag.isBit(); });
    return bits;
}

/// Carries one recipe over one link, in both directions.
class RecipeTransfer
{
public:
    RecipeTransfer(const DriverLibrary& driver, const LinkOptions& options,
                   const std::vector<Tag>& tags)
        : m_tags(tags),
          m_plan(tags, DriverSession::LINK_NUMBER),
          m_host(driver, options, bitTags(tags), false),
          m_showsProgress(isatty(STDERR_FILENO) && !options.json && !options.trace)
    {
        m_host.connect();
    }

    void download(const std::vector<QByteArray>& values)
    {
        transfer(RECIPE_DOWNLOAD_FLAG, m_plan.downloadRecords(), m_plan.buffer(values));
    }

    /// The values in the PLC, by tag.
    std::vector<QByteArray> upload()
    {
        std::vector<QByteArray> values(m_tags.size());
        const QByteArray zeros(m_plan.bufferBytes(), '\0');
        const QByteArray words = transfer(RECIPE_UPLOAD_FLAG, m_plan.uploadRecords(), zeros);
        const std::vector<TagState> bits = readBits();
        size_t bit = 0;
        for (size_t tag = 0; tag < m_tags.size(); ++tag)
            values[tag] = m_tags[tag].isBit() ? bits[bit++].bytes : m_plan.value(tag, words);
        return values;
    }

private:
    QByteArray transfer(RecipeFlag flag, const QVector<_RCP_VAR_PRO>& records,
                        const QByteArray& values)
    {
        if (records.isEmpty()) return values;
        RecipeJob job;
        job.job = m_host.newJob();
        job.flag = flag;
        job.records = records;
        job.values = values;
        m_host.communication().transfer(job);
        const JobEnd end = m_host.await(
            job.job, [this, flag, &records](int done) { show(flag, done, int(records.size())); });
        if (m_showsProgress) std::fputc('\n', stderr);
        return end.values;
    }

    std::vector<TagState> readBits()
    {
        if (!m_host.blocks().empty()) {
            const int job = m_host.newJob();
            m_host.communication().readOnce(job, m_host.blocks());
            m_host.await(job);
        }
        return m_host.board().tags();
    }

    void show(RecipeFlag flag, int done, int blocks) const
    {
        if (!m_showsProgress) return;
        std::fprintf(stderr, "\r%s %d of %d blocks",
                     flag == RECIPE_DOWNLOAD_FLAG ? "writing" : "reading", done, blocks);
    }

    const std::vector<Tag> m_tags;
    const RecipePlan m_plan;
    LiveHost m_host;
    const bool m_showsProgress;
};

void printMismatch(const Tag& tag, const QByteArray& expected, const QByteArray& found, bool json)
{
    const QString expectedText = tagValueText(tag, expected);
    const QString foundText = tagValueText(tag, found);
    if (!json) {
        std::printf("%s is %s, not %s\n", qUtf8Printable(labelText(tag)), qUtf8Printable(foundText),
                    qUtf8Printable(expectedText));
        return;
    }
    QJsonObject object;
    object.insert(QLatin1String("name"), tag.name);
    object.insert(QLatin1String("address"), placeText(tag));
    object.insert(QLatin1String("expected"), expectedText);
    object.insert(QLatin1String("found"), foundText);
    std::printf("%s\n", QJsonDocument(object).toJson(QJsonDocument::Compact).constData());
}

void verify(const std::vector<Tag>& tags, const std::vector<QByteArray>& expected,
            const std::vector<QByteArray>& found, bool json)
{
    int mismatches = 0;
    for (size_t tag = 0; tag < tags.size(); ++tag) {
        if (expected[tag] == found[tag]) continue;
        ++mismatches;
        printMismatch(tags[tag], expected[tag], found[tag], json);
    }
    if (mismatches == 0) return;
    throw VerbFailure(
        EXIT_VERIFY,
        QString(QLatin1String("%1 of %2 values differ")).arg(mismatches).arg(tags.size()));
}

void printDone(const char* what, size_t values, bool verified, bool json)
{
    if (!json) {
        std::printf("%s %zu values%s\n", what, values, verified ? ", verified" : "");
        return;
    }
    QJsonObject object;
    object.insert(QLatin1String("recipe"), QLatin1String(what));
    object.insert(QLatin1String("values"), int(values));
    object.insert(QLatin1String("verified"), verified);
    std::printf("%s\n", QJsonDocument(object).toJson(QJsonDocument::Compact).constData());
}

} // namespace

ExitStatus downloadRecipe(const DriverLibrary& driver, const LinkOptions& options,
                          const RecipeOptions& recipeOptions)
{
    const Recipe recipe = readRecipeFile(recipeOptions.file, driver, true);
    RecipeTransfer transfer(driver, options, recipe.tags);
    transfer.download(recipe.values);
    if (recipeOptions.verify) verify(recipe.tags, recipe.values, transfer.upload(), options.json);
    printDone("downloaded", recipe.tags.size(), recipeOptions.verify, options.json);
    return EXIT_DONE;
}

ExitStatus uploadRecipe(const DriverLibrary& driver, const LinkOptions& options,
                        const RecipeOptions& recipeOptions)
{
    Recipe recipe = readRecipeFile(recipeOptions.file, driver, false);
    RecipeTransfer transfer(driver, options, recipe.tags);
    recipe.values = transfer.upload();
    if (recipeOptions.verify) verify(recipe.tags, recipe.values, transfer.upload(), options.json);
    writeRecipeFile(recipeOptions.output.isEmpty() ? recipeOptions.file : recipeOptions.output,
                    recipe);
    printDone("uploaded", recipe.tags.size(), recipeOptions.verify, options.json);
    return EXIT_DONE;
}
