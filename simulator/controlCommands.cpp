#include "controlCommands.h"

#include "numberText.h"
#include "placeText.h"

#include <cmath>

namespace {

const int LAST_STATION = 247;
const double LONGEST_STALL_S = 3600;
const double SECOND_NS = 1e9;

const char* const COMMANDS =
    "'set ADDRESS=VALUE', 'get ADDRESS', 'refuse RANGE', 'refuse none', 'stall SECONDS', "
    "'silent STATION on|off' and 'quit'";

std::string error(const std::string& sentence)
{
    return "error " + sentence;
}

std::string absent(int station)
{
    return error("there is no station " + std::to_string(station));
}

} // namespace

std::string ControlCommands::answer(const std::string& line, std::int64_t now)
{
    const std::vector<std::string> words = wordsOf(line);
    const std::string command = words.empty() ? "" : words[0];
    if (words.size() == 2 && command == "set") return set(words[1]);
    if (words.size() == 2 && command == "get") return get(words[1]);
    if (words.size() == 2 && command == "refuse") return refuse(words[1]);
    if (words.size() == 2 && command == "stall") return stall(words[1], now);
    if (words.size() == 3 && command == "silent") return silence(words[1], words[2]);
    if (words.size() != 1 || command != "quit")
        return error(std::string("the commands are ") + COMMANDS);
    m_isQuit = true;
    return "ok";
}

std::string ControlCommands::set(const std::string& argument)
{
    PlaceValue assigned;
    const std::string trouble = parseAssignment(argument, assigned);
    if (!trouble.empty()) return error(trouble);
    if (!m_stations.find(assigned.place.station)) return absent(assigned.place.station);
    m_stations.apply(assigned);
    return "ok";
}

std::string ControlCommands::get(const std::string& argument)
{
    Place place;
    const std::string trouble = parsePlace(argument, place);
    if (!trouble.empty()) return error(trouble);
    if (!m_stations.find(place.station)) return absent(place.station);
    return "ok " + std::to_string(m_stations.valueAt(place));
}

std::string ControlCommands::refuse(const std::string& argument)
{
    if (argument == "none") {
        m_handler.refuseNothing();
        return "ok";
    }
    Refusal refusal;
    const std::string trouble = parseRefusal(argument, refusal);
    if (!trouble.empty()) return error(trouble);
    if (!m_stations.find(refusal.station)) return absent(refusal.station);
    if (!m_handler.refuse(refusal)) return error("there are too many refusals");
    return "ok";
}

std::string ControlCommands::stall(const std::string& argument, std::int64_t now)
{
    const double seconds = decimalNumber(argument).value_or(-1);
    if (!(seconds >= 0 && seconds <= LONGEST_STALL_S))
        return error("'" + argument + "' is not a number of seconds from 0 to 3600");
    m_handler.stall(now, std::llround(seconds * SECOND_NS));
    return "ok";
}

std::string ControlCommands::silence(const std::string& station, const std::string& state)
{
    int number = 0;
    if (!readNumber(station, 1, LAST_STATION, number))
        return error(outside("station", station, 1, LAST_STATION));
    if (!m_stations.find(number)) return absent(number);
    if (state != "on" && state != "off") return error("'" + state + "' is neither on nor off");
    m_handler.setSilent(number, state == "on");
    return "ok";
}
