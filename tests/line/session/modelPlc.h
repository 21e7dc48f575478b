#ifndef MODEL_PLC_H
#define MODEL_PLC_H

#include <QByteArray>

#include <map>
#include <set>

/// A PLC as simple as it can be, to judge the host by: it shares no code with the driver, the host
/// or the simulated PLC. Requests go in whole, replies come out whole, nothing takes time.
///
///   holding registers  QW from 0, MW from 3000
///   input registers    IW and the bits of IX
///   coils              below 3000 the bits of QW, from 3000 on the bits of MW
class ModelPlc
{
public:
    struct Station
    {
        std::map<int, int> holding;     ///< by register; one that is not there is 0
        std::map<int, int> inputs;      ///< by register
        bool silent = false;            ///< hears nothing
        std::map<int, int> refusals;    ///< exception code by the first register or coil asked for
        std::set<int> seen;             ///< first registers or coils of the requests it obeyed
        int lastHolding = 65535;        ///< reads of holding registers behind it are refused
        std::map<int, int> refusalsDue; ///< how many more times; one that is not there: always
    };

    /// A station there is none of hears nothing.
    Station& station(int number)
    {
        return m_stations[number];
    }

    /// @return the reply; empty: none comes
    QByteArray answer(const QByteArray& request);

    int word(int station, int number);
    bool coil(int station, int number);
    void setCoil(int station, int number, bool on);

    /// A frame of these bytes.
    static QByteArray withChecksum(QByteArray bytes);

private:
    static int refusalOf(Station& station, int first);
    static QByteArray obey(Station& station, const QByteArray& request);

    std::map<int, Station> m_stations;
};

#endif
