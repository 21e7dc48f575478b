#include "simulatorProcess.h"

#include "links/serialLink.h"
#include "links/tcpLink.h"

#include <fstream>
#include <stdexcept>

namespace {

enum { START_MS = 30000, END_MS = 30000, WORD_BITS = 16, MARKER_BASE = 3000 };

std::vector<std::string> withEnd(std::vector<std::string> arguments, const QTemporaryDir& folder)
{
    arguments.insert(arguments.end(),
                     {"--until-stdin-ends", "--dump",
                      folder.filePath(QLatin1String("memory")).toStdString(), "--report",
                      folder.filePath(QLatin1String("report")).toStdString()});
    return arguments;
}

QByteArray wordBytes(int word)
{
    return QByteArray(1, char(word & 0xFF)) + QByteArray(1, char(word >> 8 & 0xFF));
}

} // namespace

SimulatorProcess::SimulatorProcess(std::vector<std::string> arguments)
    : m_process(KAKB_SIMULATOR_FILE, withEnd(std::move(arguments), m_folder)),
      m_address(m_process.readLine(START_MS).value_or(""))
{
    if (m_address.empty()) throw std::runtime_error("the simulated PLC does not start");
}

LinkThread::OpenLink SimulatorProcess::opener() const
{
    const QString address = QString::fromStdString(m_address);
    const QString network = QLatin1String("tcp:");
    if (!address.startsWith(network)) {
        return [address] { return std::unique_ptr<Link>(new SerialLink(address, LineSettings())); };
    }
    const QString host = address.mid(int(network.size())).section(QLatin1Char(','), 0, 0);
    const int port = address.section(QLatin1Char(','), 1).toInt();
    return [host, port] { return std::unique_ptr<Link>(new TcpLink(host, port)); };
}

void SimulatorProcess::kill()
{
    m_process.kill();
}

void SimulatorProcess::end()
{
    m_process.closeInput();
    m_process.waitForEnd(END_MS);
    std::ifstream memory(m_folder.filePath(QLatin1String("memory")).toStdString());
    int station = 0;
    int number = 0;
    int value = 0;
    std::string area;
    while (memory >> station >> area >> number >> value)
        m_memory[Place(station, area, number)] = value;
    std::ifstream report(m_folder.filePath(QLatin1String("report")).toStdString());
    std::string key;
    long long count = 0;
    while (report >> key >> count)
        m_report[key] = count;
}

int SimulatorProcess::word(int station, const std::string& area, int number) const
{
    const auto found = m_memory.find(Place(station, area, number));
    return found == m_memory.end() ? 0 : found->second;
}

/// Bit k of word w is bit 16 w + k of its area. Marker bits and marker words both count from 3000.
QByteArray SimulatorProcess::bytesOf(const Tag& tag) const
{
    const std::string words = tag.area.left(1).toStdString() + "W";
    if (tag.isBit()) {
        const int first = words == "MW" ? int(MARKER_BASE) : 0;
        const int bit = tag.number - first;
        return QByteArray(
            1, char(word(tag.station, words, first + bit / WORD_BITS) >> bit % WORD_BITS & 1));
    }
    QByteArray bytes;
    for (int unit = 0; unit < tag.units(); ++unit)
        bytes += wordBytes(word(tag.station, words, tag.number + unit));
    return bytes;
}

long long SimulatorProcess::reported(const std::string& key) const
{
    const auto found = m_report.find(key);
    return found == m_report.end() ? -1 : found->second;
}
