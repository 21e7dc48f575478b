#include "verbs/recipeVerb.h"

#include "output/changeLines.h"
#include "plan/recipeFile.h"
#include "plan/recipePlan.h"
#include "plan/tagValue.h"
#include "program/resultFile.h"
#include "verbs/difference.h"
#include "verbs/tagChoice.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <functional>

namespace {

/// Shows the progress of a transfer in one line of a terminal. The destructor ends the line, also
/// after a failure.
class ProgressLine
{
public:
    ProgressLine(const char* what, int blocks, bool isShown)
        : m_what(what), m_blocks(blocks), m_isShown(isShown)
    {
    }
    ~ProgressLine()
    {
        if (m_isShown) std::fputc('\n', stderr);
    }

    void show(int done) const
    {
        if (m_isShown) std::fprintf(stderr, "\r%s %d of %d blocks", m_what, done, m_blocks);
    }

private:
    const char* const m_what;
    const int m_blocks;
    const bool m_isShown;
};

/// Transfers a recipe over a link, in both directions.
class RecipeTransfer
{
public:
    RecipeTransfer(const DriverLibrary& driver, const LinkOptions& options,
                   const std::vector<Tag>& tags)
        : m_tags(tags),
          m_plan(tags, StartedDriver::LINK_NUMBER),
          m_host(driver, options, tags, LinkRun::ON_REQUEST),
          m_showsProgress(isatty(STDERR_FILENO) && !options.json && !options.trace)
    {
    }

    /// Opens the link and does the work of a verb.
    ExitStatus run(const std::function<ExitStatus()>& work)
    {
        return m_host.run([&] {
            m_host.connect();
            return work();
        });
    }

    void download(const std::vector<QByteArray>& values)
    {
        transfer("writing", RECIPE_DOWNLOAD_FLAG, m_plan.downloadRecords(), m_plan.buffer(values));
    }

    /// The values in the PLC, by tag.
    /// @param what  name of the transfer in the progress line
    std::vector<QByteArray> upload(const char* what)
    {
        std::vector<QByteArray> values(m_tags.size());
        const QByteArray zeros(m_plan.bufferBytes(), '\0');
        const QByteArray words = transfer(what, RECIPE_UPLOAD_FLAG, m_plan.uploadRecords(), zeros);
        const std::vector<TagState> states = readBits();
        for (size_t tag = 0; tag < m_tags.size(); ++tag)
            values[tag] = m_tags[tag].isBit() ? states[tag].bytes : m_plan.value(tag, words);
        return values;
    }

private:
    QByteArray transfer(const char* what, RecipeFlag flag, const QVector<_RCP_VAR_PRO>& records,
                        const QByteArray& values)
    {
        if (records.isEmpty()) return values;
        RecipeJob job;
        job.job = m_host.newJob();
        job.flag = flag;
        job.records = records;
        job.values = values;
        const ProgressLine progress(what, int(records.size()), m_showsProgress);
        m_host.link().transfer(job);
        return m_host.await(job.job, [&progress](int done) { progress.show(done); }).values;
    }

    std::vector<TagState> readBits()
    {
        std::vector<ReadBlock> blocks;
        for (const ReadBlock& block : m_host.blocks()) {
            const bool hasBits = std::any_of(block.tags.begin(), block.tags.end(), [this](int tag) {
                return m_tags[size_t(tag)].isBit();
            });
            if (hasBits) blocks.push_back(block);
        }
        if (!blocks.empty()) {
            const int job = m_host.newJob();
            m_host.link().read(job, blocks);
            m_host.await(job);
        }
        return m_host.values().tags();
    }

    const std::vector<Tag> m_tags;
    const RecipePlan m_plan;
    HostProgram m_host;
    const bool m_showsProgress;
};

void verify(const std::vector<Tag>& tags, const std::vector<QByteArray>& expected,
            const std::vector<QByteArray>& found, bool json)
{
    int mismatches = 0;
    for (size_t tag = 0; tag < tags.size(); ++tag) {
        if (expected[tag] == found[tag]) continue;
        ++mismatches;
        printDifference(tags[tag], expected[tag], found[tag], json);
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
    const Recipe recipe = readRecipeFile(
        recipeOptions.file, driver, recipeOptions.allowsNan ? FOR_DOWNLOAD_WITH_NAN : FOR_DOWNLOAD);
    RecipeTransfer transfer(driver, options, recipe.tags);
    return transfer.run([&] {
        transfer.download(recipe.values);
        if (recipeOptions.verify)
            verify(recipe.tags, recipe.values, transfer.upload("reading back"), options.json);
        printDone("downloaded", recipe.tags.size(), recipeOptions.verify, options.json);
        return EXIT_DONE;
    });
}

ExitStatus uploadRecipe(const DriverLibrary& driver, const LinkOptions& options,
                        const RecipeOptions& recipeOptions)
{
    Recipe recipe = readRecipeFile(recipeOptions.file, driver, FOR_UPLOAD);
    RecipeTransfer transfer(driver, options, recipe.tags);
    return transfer.run([&] {
        recipe.values = transfer.upload("reading");
        if (recipeOptions.verify)
            verify(recipe.tags, recipe.values, transfer.upload("reading back"), options.json);
        writeResult(recipeOptions.output, recipeText(recipe));
        printDone("uploaded", recipe.tags.size(), recipeOptions.verify, options.json);
        return EXIT_DONE;
    });
}
