#include "callRunner.h"

#include "comparedCalls.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <new>

namespace model {

namespace {

enum { MOST_TEXT = 60000 };

/// What the child leaves for its parent, also when it crashes.
struct Report
{
    bool found;
    size_t callIndex;
    char text[MOST_TEXT];
};

Report* sharedReport()
{
    void* memory =
        mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) throw std::bad_alloc();
    return static_cast<Report*>(memory);
}

void limitTime(unsigned mostCpuSeconds)
{
    struct rlimit limit = {mostCpuSeconds, mostCpuSeconds};
    setrlimit(RLIMIT_CPU, &limit);
}

void put(Report& report, const Disagreement& disagreement)
{
    const size_t length = std::min<size_t>(disagreement.text.size(), MOST_TEXT - 1);
    disagreement.text.copy(report.text, length);
    report.text[length] = '\0';
    report.callIndex = disagreement.callIndex;
    report.found = disagreement.found;
}

Disagreement run(const DriverFunctions& driver, const std::vector<Call>& calls, size_t& progress)
{
    ComparedCalls compared(driver);
    for (progress = 0; progress < calls.size(); ++progress) {
        const std::string text = compared.run(calls[progress]);
        if (!text.empty()) return {true, progress, text};
    }
    const std::string damage = compared.damage();
    return {!damage.empty(), calls.size() - 1, damage};
}

} // namespace

Disagreement runApart(const DriverFunctions& driver, const std::vector<Call>& calls,
                      unsigned mostCpuSeconds)
{
    static Report* const report = sharedReport();
    report->found = false;
    report->text[0] = '\0';
    const pid_t child = fork();
    if (child < 0) throw std::bad_alloc();
    if (child == 0) {
        limitTime(mostCpuSeconds);
        put(*report, run(driver, calls, report->callIndex));
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0)
        return {report->found, report->callIndex, report->text};
    const std::string how = WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status))
                                                : "status " + std::to_string(WEXITSTATUS(status));
    return {true, report->callIndex, "  the process ended with " + how + "\n"};
}

} // namespace model
