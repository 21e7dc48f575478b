#ifndef BIRTH_SEQUENCE_FILE_H
#define BIRTH_SEQUENCE_FILE_H

#include "sparkplug/edgeNode.h"

/// The counter of CONNECTs in a file of the state folder: one decimal number, the last that was
/// given out. A file that holds no such number is as good as none.
class BirthSequenceFile : public BirthSequence
{
public:
    explicit BirthSequenceFile(QString fileName);

    std::optional<quint8> take() override;
    void giveBack() override;

private:
    bool store(std::optional<quint8> last);

    const QString m_fileName;
    std::optional<quint8> m_last, m_before; ///< the last number, and the one ahead of it
    bool m_isRead = false;
};

#endif
