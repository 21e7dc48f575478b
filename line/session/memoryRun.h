#ifndef MEMORY_RUN_H
#define MEMORY_RUN_H

#include <QByteArray>

/// A run of the controller's memory as an answered exchange showed it: the registers that a read
/// brought, or the registers or coils that a confirmed write holds. Coils are bits of the holding
/// registers, so every place is counted in bits: bit k of register r is at 16 r + k.
struct MemoryRun
{
    enum Table {
        HOLDING, ///< QW and MW, and the bits of QX and MX
        INPUT    ///< IW, and the bits of IX
    };
    enum { REGISTER_BITS = 16 };

    int station = 0;
    Table table = HOLDING;
    int from = 0;         ///< place of the first bit
    int until = 0;        ///< place behind the last bit; from: the run is empty
    bool isCoils = false; ///< `data` holds packed bits, the first one lowest; otherwise registers,
                          ///< high byte first
    QByteArray data;

    /// One bit of the run, 0 or 1.
    int bit(int place) const;

    /// The 16 bits of the run from a place on.
    int word(int place) const;
};

/// The memory that an exchange has shown. A reply to a read must be the whole reply. The answer to
/// a write adds nothing to its request. The run is empty when the frames do not fit each other, and
/// after requests of other functions than those of the driver.
MemoryRun memoryShownBy(const QByteArray& request, const QByteArray& reply);

#endif
