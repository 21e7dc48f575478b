#include "plan/recipePlan.h"

#include "plan/sharedMemory.h"

#include <QStringList>

#include <algorithm>
#include <tuple>

namespace {

enum { BUFFER_WORDS = 65536, BYTES_PER_WORD = 2 };

} // namespace

RecipePlan::RecipePlan(const std::vector<Tag>& tags, int linkNumber)
    : m_tags(tags), m_linkNumber(linkNumber), m_bytePlaces(tags.size())
{
    sortUnits();
    checkShared();
    layOut();
    if (m_words > BUFFER_WORDS) throw RecipeError("the recipe has more than 65536 words");
}

void RecipePlan::sortUnits()
{
    for (size_t tag = 0; tag < m_tags.size(); ++tag) {
        m_bytePlaces[tag].resize(size_t(m_tags[tag].units()));
        for (int unit = 0; unit < m_tags[tag].units(); ++unit)
            m_units.push_back(
                {m_tags[tag].station, m_tags[tag].area, m_tags[tag].number + unit, tag, unit});
    }
    std::stable_sort(m_units.begin(), m_units.end(), [](const Unit& a, const Unit& b) {
        return std::tie(a.station, a.area, a.number) < std::tie(b.station, b.area, b.number);
    });
}

void RecipePlan::checkShared() const
{
    QStringList problems;
    for (const auto& [first, second] : sharingTags(m_tags)) {
        const Tag& a = m_tags[first];
        const Tag& b = m_tags[second];
        problems << QString(QLatin1String("%1 and %2 share %3 of station %4"))
                        .arg(a.name, b.name,
                             QLatin1String(a.isBit() || b.isBit() ? "a bit" : "a word"),
                             QString::number(a.station));
    }
    if (!problems.isEmpty()) throw RecipeError(problems.join(QLatin1Char('\n')).toStdString());
}

/// The unit lies right behind the one before it, and the last record has room for it and the rest
/// of its tag: half a value in a frame of its own could be written or read without the other half.
bool RecipePlan::continues(size_t unit) const
{
    if (unit == 0) return false;
    const Unit& before = m_units[unit - 1];
    const Unit& at = m_units[unit];
    const int rest = m_tags[at.tag].units() - at.unitOfTag;
    const int most = isBitArea(at.area) ? int(MOST_RECORD_BITS) : int(MOST_RECORD_WORDS);
    return before.station == at.station && before.area == at.area &&
           before.number + 1 == at.number && m_records.back().count + rest <= most;
}

/// Words take two bytes each in the buffer, bits one each.
void RecipePlan::layOut()
{
    for (size_t i = 0; i < m_units.size(); ++i) {
        const Unit& unit = m_units[i];
        if (!continues(i)) {
            _RCP_VAR_PRO record;
            record.linkNo = m_linkNumber;
            record.station = unit.station;
            record.regName = unit.area;
            record.addr = unit.number;
            record.bufOffset = m_words;
            m_records.push_back(record);
        }
        _RCP_VAR_PRO& record = m_records.back();
        const int size = isBitArea(unit.area) ? 1 : int(BYTES_PER_WORD);
        const int byte = BYTES_PER_WORD * record.bufOffset + size * record.count;
        m_bytePlaces[unit.tag][size_t(unit.unitOfTag)] = byte;
        ++record.count;
        m_words = (byte + size + 1) / BYTES_PER_WORD;
    }
}

QVector<_RCP_VAR_PRO> RecipePlan::downloadRecords() const
{
    QVector<_RCP_VAR_PRO> records;
    for (const _RCP_VAR_PRO& record : m_records)
        records.append(record);
    return records;
}

QVector<_RCP_VAR_PRO> RecipePlan::uploadRecords() const
{
    QVector<_RCP_VAR_PRO> records;
    for (const _RCP_VAR_PRO& record : m_records) {
        if (!isBitArea(record.regName)) records.append(record);
    }
    return records;
}

QByteArray RecipePlan::buffer(const std::vector<QByteArray>& values) const
{
    QByteArray bytes(bufferBytes(), '\0');
    for (size_t tag = 0; tag < m_tags.size(); ++tag) {
        const int size = m_tags[tag].isBit() ? 1 : int(BYTES_PER_WORD);
        for (size_t unit = 0; unit < m_bytePlaces[tag].size(); ++unit)
            bytes.replace(m_bytePlaces[tag][unit], size, values[tag].mid(int(unit) * size, size));
    }
    return bytes;
}

QByteArray RecipePlan::value(size_t tag, const QByteArray& buffer) const
{
    QByteArray bytes;
    for (const int place : m_bytePlaces[tag])
        bytes += buffer.mid(place, BYTES_PER_WORD);
    return bytes;
}
