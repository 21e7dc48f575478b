#include "terminalHolder.h"

#include "numberText.h"

#include <climits>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace {

namespace fs = std::filesystem;

const char* const TERMINALS = "/dev/pts/";

/// The number that Linux notes for a master side: a line "tty-index: N". -1: none.
int terminalNumberOf(const fs::path& descriptorInfo)
{
    std::ifstream info(descriptorInfo);
    std::string key;
    for (int number = -1; info >> key;) {
        if (key == "tty-index:" && info >> number) return number;
    }
    return -1;
}

bool holds(const fs::path& process, int terminal)
{
    std::error_code failure;
    for (const fs::directory_entry& entry : fs::directory_iterator(process / "fd", failure)) {
        const fs::path target = fs::read_symlink(entry.path(), failure);
        if (target.filename() != "ptmx") continue;
        if (terminalNumberOf(process / "fdinfo" / entry.path().filename()) == terminal) return true;
    }
    return false;
}

std::string nameOf(const fs::path& process)
{
    std::ifstream file(process / "comm");
    std::string name;
    std::getline(file, name);
    return name;
}

} // namespace

std::string terminalHolder(const std::string& path)
{
    int terminal = -1;
    if (path.rfind(TERMINALS, 0) != 0 ||
        !readNumber(path.substr(std::string(TERMINALS).size()), 0, INT_MAX, terminal))
        return {};
    std::error_code failure;
    for (const fs::directory_entry& entry : fs::directory_iterator("/proc", failure)) {
        const std::string id = entry.path().filename().string();
        int number = 0;
        if (readNumber(id, 1, INT_MAX, number) && holds(entry.path(), terminal))
            return nameOf(entry.path()) + ", process " + id;
    }
    return {};
}
