#include "processFigures.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

namespace fs = std::filesystem;

// Positions of fields in /proc/PID/task/TID/stat, counted behind the name in brackets, because the
// name may contain blanks.
enum { FIELDS_BEFORE_USER_TIME = 11 };

fs::path folderOf(pid_t process)
{
    return fs::path("/proc") / std::to_string(process);
}

double threadSeconds(const fs::path& thread)
{
    std::ifstream file(thread / "stat");
    std::string line;
    std::getline(file, line);
    const size_t nameEnd = line.rfind(')');
    if (nameEnd == std::string::npos) return 0; // the thread has ended
    std::istringstream fields(line.substr(nameEnd + 1));
    std::string skipped;
    for (int i = 0; i < FIELDS_BEFORE_USER_TIME; ++i)
        fields >> skipped;
    double user = 0;
    double system = 0;
    fields >> user >> system;
    return (user + system) / double(sysconf(_SC_CLK_TCK));
}

} // namespace

int openDescriptors()
{
    const fs::directory_iterator all("/proc/self/fd");
    return int(std::distance(fs::begin(all), fs::end(all)));
}

long kilobytes(pid_t process, const std::string& key)
{
    std::ifstream file(folderOf(process) / "status");
    std::string line;
    while (std::getline(file, line)) {
        if (line.compare(0, key.size() + 1, key + ":") == 0)
            return std::stol(line.substr(key.size() + 1));
    }
    return -1;
}

double busiestThreadSeconds(pid_t process)
{
    double most = 0;
    for (const fs::directory_entry& thread : fs::directory_iterator(folderOf(process) / "task")) {
        if (thread.path().filename() == std::to_string(process)) continue;
        most = std::max(most, threadSeconds(thread.path()));
    }
    return most;
}
