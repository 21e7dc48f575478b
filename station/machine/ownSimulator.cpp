#include "machine/ownSimulator.h"

#include <utility>

OwnSimulator::OwnSimulator(const QString& program, const QStringList& arguments,
                           std::function<void()> tellEnd)
    : m_program(program),
      m_arguments(arguments),
      m_tellEnd(std::move(tellEnd)),
      m_plc(std::make_unique<SimulatedPlc>(program, arguments))
{
}

std::unique_ptr<Link> OwnSimulator::open(const LineSettings& line)
{
    const State before = std::exchange(m_state, USELESS);
    if (before == OPENED) m_tellEnd();
    if (before != STARTED) {
        m_plc.reset(); // before the next one starts
        m_plc = std::make_unique<SimulatedPlc>(m_program, m_arguments);
    }
    auto link = m_plc->open(line);
    m_state = OPENED;
    return link;
}
