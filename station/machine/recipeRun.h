#ifndef RECIPE_RUN_H
#define RECIPE_RUN_H

#include "machine/recipeJob.h"
#include "session/linkRun.h"
#include "session/recipeSteps.h"

/// One recipe on its way over a link: its jobs, one behind the other, and its end.
///
///     download              WRITE_ALL
///     download and verify   WRITE_ALL -> READ_WORDS -> READ_BITS -> compared
///     upload                             READ_WORDS -> READ_BITS
///     compare                            READ_WORDS -> READ_BITS -> compared
///
/// Steps that have nothing to do are left out. The first step that fails ends the recipe.
/// Any thread calls it, one at a time.
class RecipeRun
{
public:
    /// @throws RecipeError with the reasons why the recipe cannot be transferred
    RecipeRun(RecipeRequest request, const WireCost& cost);

    /// Hands in the job of the next step.
    /// @return false: no step is left
    bool start(LinkRun& run, int job);

    /// The job of the step has ended.
    void ended(const JobEnd& end);

    /// All steps are done, or one has failed.
    bool isOver() const
    {
        return m_hasFailed || m_next >= m_steps.size();
    }

    /// Blocks of all steps, and those that are done when the step under way has done some of its.
    int blocks() const;
    int blocksDone(int ofStep) const;

    /// What became of it. Only when it is over.
    RecipeEnd end() const;

    /// The end of a recipe whose next step is not started any more.
    /// @param why  in words
    RecipeEnd givenUp(const QString& why) const;

    /// The end of a recipe that has failed.
    static RecipeEnd failed(const QString& block, const QString& reason);

    const RecipeRequest& request() const
    {
        return m_request;
    }

private:
    enum Step { WRITE_ALL, READ_WORDS, READ_BITS };

    void planSteps();
    int blocksOf(Step step) const;
    QString reasonOf(const QString& trouble) const;
    std::vector<RecipeEnd::Difference> differences(const std::vector<QByteArray>& found) const;

    const RecipeRequest m_request;
    const RecipeSteps m_jobs;
    std::vector<Step> m_steps;
    size_t m_next = 0; ///< the step under way or to start; the steps before it are done
    bool m_hasFailed = false;
    RecipeEnd m_failure;
    QByteArray m_words; ///< as they were read
    QByteArray m_bits;  ///< as they were read
};

#endif
