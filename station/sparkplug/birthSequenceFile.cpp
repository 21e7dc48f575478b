#include "sparkplug/birthSequenceFile.h"

#include "plant/durableFile.h"

#include <QFile>

#include <utility>

namespace {

/// A file that is there and cannot be read may hold any number: none must be given out again.
struct StoredNumber
{
    bool isKnown = false;
    std::optional<quint8> number;
};

StoredNumber storedNumber(const QString& fileName)
{
    QFile file(fileName);
    if (!file.exists()) return {true, std::nullopt};
    if (!file.open(QIODevice::ReadOnly)) return {};
    const QByteArray text = file.read(16).trimmed();
    if (file.error() != QFile::NoError) return {};
    bool isNumber = false;
    const uint number = text.toUInt(&isNumber);
    if (!isNumber || number > 255) return {true, std::nullopt};
    return {true, quint8(number)};
}

} // namespace

BirthSequenceFile::BirthSequenceFile(QString fileName) : m_fileName(std::move(fileName)) {}

std::optional<quint8> BirthSequenceFile::take()
{
    if (!m_isRead) {
        const StoredNumber stored = storedNumber(m_fileName);
        if (!stored.isKnown) return std::nullopt;
        m_last = stored.number;
        m_isRead = true;
    }
    const quint8 next = m_last ? quint8(*m_last + 1u) : quint8(0);
    if (!store(next)) return std::nullopt;
    m_before = std::exchange(m_last, next);
    return next;
}

/// When this cannot be stored, a restart skips a number: hosts take that for a death they missed.
void BirthSequenceFile::giveBack()
{
    m_last = m_before;
    store(m_last);
}

bool BirthSequenceFile::store(std::optional<quint8> last)
{
    const QByteArray text = last ? QByteArray::number(uint(*last)) + '\n' : QByteArray("none\n");
    return writeDurably(m_fileName, text).isEmpty();
}
