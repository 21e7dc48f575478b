#include "verbs/recipeVerb.h"

#include "output/changeLines.h"
#include "plan/recipeFile.h"
#include "plan/tagValue.h"
#include "program/resultFile.h"
#include "session/recipeSteps.h"
#include "verbs/difference.h"
#include "verbs/tagChoice.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <unistd.h>

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
        : m_host(driver, options, tags, LinkRun::ON_REQUEST),
          m_steps(tags, m_host.link().cost()),
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
        transfer("writing", m_steps.download(m_host.newJob(), values));
    }

    /// The values in the PLC, by tag.
    /// @param what  name of the transfer in the progress line
    std::vector<QByteArray> upload(const char* what)
    {
        const QByteArray words = transfer(what, m_steps.upload(m_host.newJob()));
        return m_steps.values(words, readBits());
    }

private:
    QByteArray transfer(const char* what, const RecipeJob& job)
    {
        if (job.records.isEmpty()) return job.values;
        const ProgressLine progress(what, int(job.records.size()), m_showsProgress);
        m_host.link().transfer(job);
        return m_host.await(job.job, [&progress](int done) { progress.show(done); }).values;
    }

    QByteArray readBits()
    {
        if (m_steps.bitBlocks().empty()) return QByteArray();
        const int job = m_host.newJob();
        m_host.link().read(job, m_steps.bitBlocks());
        return m_host.await(job).values;
    }

    HostProgram m_host;
    const RecipeSteps m_steps;
    const bool m_showsProgress;
};

void verify(const std::vector<Tag>& tags, const std::vector<QByteArray>& expected,
            const std::vector<QByteArray>& found, bool json)
{
    const std::vector<size_t> differing = differingValues(expected, found);
    if (differing.empty()) return;
    for (const size_t tag : differing)
        printDifference(tags[tag], expected[tag], found[tag], json);
    throw VerbFailure(
        EXIT_VERIFY,
        QString(QLatin1String("%1 of %2 values differ")).arg(differing.size()).arg(tags.size()));
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
