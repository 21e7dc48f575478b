#include "faultRun.h"

void FaultRun::print(std::ostream& out) const
{
    out << m_figures.exchanges << " exchanges: " << m_figures.accepted << " accepted, "
        << m_figures.givenUp << " given up, " << m_listening.heldBack() << " held back, "
        << m_listening.dropped() << " foreign replies dropped\nfaults:";
    for (int fault = 1; fault < static_cast<int>(Fault::KINDS); ++fault)
        out << " " << faultName(static_cast<Fault>(fault)) << " "
            << m_line.faults(static_cast<Fault>(fault)) << ",";
    out << " displaced by a late one " << m_line.displaced() << "\nwrites: " << m_accounts.opened
        << ", confirmed " << m_accounts.confirmed << ", withdrawn " << m_accounts.withdrawn
        << ", replaced by a newer one " << m_accounts.replaced
        << "\none-shot reads: " << m_figures.oneShotsRead << " read, " << m_figures.oneShotsFailed
        << " failed; recipes: " << m_figures.downloads << " down, " << m_figures.uploads << " up, "
        << m_figures.transfersFailed << " failed\n";
}
