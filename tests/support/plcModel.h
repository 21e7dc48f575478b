#ifndef PLC_MODEL_H
#define PLC_MODEL_H

#include <QByteArray>

#include <map>
#include <set>
#include <string>
#include <unordered_map>

/// A Modbus RTU server with the memory of the device, as simple as it can be, to judge driver and
/// host by. It shares no code with the driver, the host or the simulated PLC. Requests go in whole,
/// replies come out whole, nothing takes time.
///
///   holding registers  QW from 0, MW from 3000
///   input registers    IW and the bits of IX
///   coils              below 3000 the bits of QW, from 3000 on the bits of MW
/// Bits are the registers' own: bit k of a group of 16 is bit k of its register.
class PlcModel
{
public:
    typedef std::unordered_map<int, int> Registers; ///< a register that is not there holds 0

    struct Station
    {
        Registers holding;
        Registers inputs;
        bool silent = false;            ///< hears nothing
        std::map<int, int> refusals;    ///< exception code by the first register or coil asked for
        std::set<int> seen;             ///< first registers or coils of the requests it obeyed
        int lastHolding = 65535;        ///< reads of holding registers behind it are refused
        std::map<int, int> refusalsDue; ///< how many more times; one that is not there: always
    };

    /// With the stations 1 to `stations`.
    explicit PlcModel(int stations = 0);

    /// Makes the station when there is none of this number, which hears nothing.
    Station& station(int number)
    {
        return m_stations[number];
    }

    /// @return the reply; empty: none comes
    QByteArray answer(const QByteArray& request);

    /// An element by the area's name and address number: a word, or a bit as 0 or 1.
    int element(int station, const std::string& area, int number) const;
    void setElement(int station, const std::string& area, int number, int value);

    /// A holding register.
    int word(int station, int number) const
    {
        return element(station, "MW", number);
    }

    bool coil(int station, int number) const;
    void setCoil(int station, int number, bool on);

private:
    static int refusalOf(Station& station, const QByteArray& request);
    static QByteArray obey(Station& station, const QByteArray& request);

    std::map<int, Station> m_stations;
};

#endif
