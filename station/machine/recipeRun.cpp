#include "machine/recipeRun.h"

#include "machine/recipeProblem.h"

#include <utility>

namespace {

/// The request, when nothing speaks against it.
RecipeRequest checked(RecipeRequest request)
{
    const QString problem = recipeProblem(request);
    if (!problem.isEmpty()) throw RecipeError(problem.toStdString());
    return request;
}

} // namespace

RecipeRun::RecipeRun(RecipeRequest request, const WireCost& cost)
    : m_request(checked(std::move(request))), m_jobs(m_request.rows, cost)
{
    planSteps();
}

void RecipeRun::planSteps()
{
    const bool isDownload = m_request.kind == RecipeRequest::DOWNLOAD;
    if (isDownload) m_steps.push_back(WRITE_ALL);
    if (isDownload && !m_request.verify) return;
    for (const Step step : {READ_WORDS, READ_BITS}) {
        if (blocksOf(step) > 0) m_steps.push_back(step);
    }
}

int RecipeRun::blocksOf(Step step) const
{
    switch (step) {
    case WRITE_ALL:
        return m_jobs.downloadBlocks();
    case READ_WORDS:
        return m_jobs.uploadBlocks();
    case READ_BITS:
        return int(m_jobs.bitBlocks().size());
    }
    return 0;
}

bool RecipeRun::start(LinkRun& run, int job)
{
    if (isOver()) return false;
    switch (m_steps[m_next]) {
    case WRITE_ALL:
        run.transfer(m_jobs.download(job, m_request.values));
        break;
    case READ_WORDS:
        run.transfer(m_jobs.upload(job));
        break;
    case READ_BITS:
        run.read(job, m_jobs.bitBlocks());
        break;
    }
    return true;
}

void RecipeRun::ended(const JobEnd& end)
{
    if (isOver()) return;
    if (end.outcome != JobEnd::DONE) {
        m_hasFailed = true;
        m_failure = failed(end.block, reasonOf(end.reason.isEmpty() ? end.trouble : end.reason));
        return;
    }
    const Step step = m_steps[m_next++];
    if (step == READ_WORDS) m_words = end.values;
    if (step == READ_BITS) m_bits = end.values;
}

/// Whoever reads that a download has failed must know when its values are written all the same.
QString RecipeRun::reasonOf(const QString& trouble) const
{
    if (m_next == 0 || m_steps.front() != WRITE_ALL) return trouble;
    return QLatin1String("all values are written, but could not be read back: ") + trouble;
}

RecipeEnd RecipeRun::givenUp(const QString& why) const
{
    return failed(QString(), reasonOf(why));
}

RecipeEnd RecipeRun::failed(const QString& block, const QString& reason)
{
    RecipeEnd end;
    end.outcome = RecipeEnd::FAILED;
    end.block = block;
    end.reason = reason;
    return end;
}

int RecipeRun::blocks() const
{
    int all = 0;
    for (const Step step : m_steps)
        all += blocksOf(step);
    return all;
}

int RecipeRun::blocksDone(int ofStep) const
{
    int done = ofStep;
    for (size_t step = 0; step < m_next; ++step)
        done += blocksOf(m_steps[step]);
    return done;
}

RecipeEnd RecipeRun::end() const
{
    if (m_hasFailed) return m_failure;
    RecipeEnd end;
    end.outcome = RecipeEnd::DONE;
    if (m_steps.back() == WRITE_ALL) return end;
    const std::vector<QByteArray> found = m_jobs.values(m_words, m_bits);
    if (m_request.kind == RecipeRequest::UPLOAD) {
        end.values = found;
        return end;
    }
    end.differences = differences(found);
    if (!end.differences.empty()) end.outcome = RecipeEnd::DIFFERS;
    return end;
}

std::vector<RecipeEnd::Difference>
RecipeRun::differences(const std::vector<QByteArray>& found) const
{
    std::vector<RecipeEnd::Difference> differences;
    for (const size_t row : differingValues(m_request.values, found))
        differences.push_back({row, found[row]});
    return differences;
}
