#include "callRunner.h"

#include "branches.h"
#include "driverCaller.h"
#include "modelCaller.h"
#include "replyMaker.h"

#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <new>

namespace model {

namespace {

static_assert(int(Branch::CALLED_FILL_BUFFER) - int(Branch::CALLED_SET_PAGE) + 2 ==
                  int(std::variant_size_v<Call>),
              "a branch for each call after IdentityCall");

class Runner
{
public:
    explicit Runner(const DriverFunctions& driver) : m_driver(driver) {}

    /// Empty, or what differs.
    std::string run(const Call& call)
    {
        count(call);
        return std::visit([this](const auto& one) { return compare(one); }, call);
    }

    std::string damage() const
    {
        return m_driver.damage();
    }

private:
    static void count(const Call& call)
    {
        const auto* identity = std::get_if<IdentityCall>(&call);
        const int after = static_cast<int>(Branch::CALLED_SET_PAGE) - 1;
        const int branch = identity != nullptr ? static_cast<int>(Branch::CALLED_PROTOCOL_TYPE) +
                                                     static_cast<int>(identity->which)
                                               : after + static_cast<int>(call.index());
        reach(static_cast<Branch>(branch));
    }

    template <typename One> std::string compare(const One& call)
    {
        return compared(m_model(call), m_driver(call));
    }

    std::string compare(const NextFrameCall& call)
    {
        const Outcome expected = m_model(call);
        if (expected.frame) m_replies.note(*expected.frame);
        return compared(expected, m_driver(call));
    }

    std::string compare(const ReplyCall& call)
    {
        const Bytes bytes = m_replies.reply(call);
        if (m_model.isFramePending()) m_replies.count(call, bytes);
        const std::string text = compared(m_model.reply(bytes), m_driver.reply(bytes));
        return text.empty() ? text : "  reply " + hexText(bytes) + "\n" + text;
    }

    std::string compared(const Outcome& expected, const Outcome& actual)
    {
        return difference(expected, actual) + difference(m_model.memory(), m_driver.memory()) +
               m_driver.misuse();
    }

    DriverCaller m_driver;
    ModelCaller m_model;
    ReplyMaker m_replies;
};

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
    Runner runner(driver);
    for (progress = 0; progress < calls.size(); ++progress) {
        const std::string text = runner.run(calls[progress]);
        if (!text.empty()) return {true, progress, text};
    }
    const std::string damage = runner.damage();
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
