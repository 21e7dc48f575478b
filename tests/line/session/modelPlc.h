#ifndef MODEL_PLC_H
#define MODEL_PLC_H

#include <QByteArray>

#include <map>
#include <set>

/// A simple PLC as a reference for tests. It shares no code with the driver, the host or the
/// simulated PLC. It takes whole requests, returns whole replies, and needs no time.
///
///   holding registers  QW from 0, MW from 3000
///   input registers    IW and the bits of IX
///   coils              below 3000 the bits of QW, from 3000 on the bits of MW
class ModelPlc
{
public:
    struct Station
    {
        std::map<int, int> holding;     ///< by register; a missing register is 0
        std::map<int, int> inputs;      ///< by register; a missing register is 0
        bool silent = false;            ///< ignores all requests
        std::map<int, int> refusals;    ///< exception code, by the request's first register or coil
        std::set<int> seen;             ///< first registers or coils of the accepted requests
        int lastHolding = 65535;        ///< reads of higher holding registers are refused
        std::map<int, int> refusalsDue; ///< number of further refusals; a missing entry: no limit
    };

    /// Adds the station when it does not exist. Other stations do not answer.
    Station& station(int number)
    {
        return m_stations[number];
    }

    /// @return the reply; empty: no reply
    QByteArray answer(const QByteArray& request);

    int word(int station, int number);
    bool coil(int station, int number);
    void setCoil(int station, int number, bool on);

    /// The bytes with their checksum behind them.
    static QByteArray withChecksum(QByteArray bytes);

private:
    static int refusalOf(Station& station, int first);
    static QByteArray obey(Station& station, const QByteArray& request);

    std::map<int, Station> m_stations;
};

#endif
