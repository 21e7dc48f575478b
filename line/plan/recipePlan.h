#ifndef RECIPE_PLAN_H
#define RECIPE_PLAN_H

#include "plan/tag.h"
#include "quorvane_ka_kb_plc.h"

#include <QByteArray>

#include <stdexcept>
#include <vector>

/// The recipe cannot be transferred. what() has one line for each reason.
struct RecipeError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// The layout of a recipe's tags in the driver's recipe buffer, and the records that transfer them.
///
/// Adjacent words become one record, and so do adjacent bits. No two records start at the same unit
/// and no two records of bits are adjacent: the driver would join such records and take their
/// values from the wrong places of the buffer.
///
/// Bits have no upload records, because the driver stores whole words for them. Read the bits in
/// another way.
class RecipePlan
{
public:
    enum {
        MOST_RECORD_WORDS = 123, ///< MODBUS Application Protocol V1.1b3, 6.12
        MOST_RECORD_BITS = 496   ///< whole groups of 16, the most bits that a record may write
    };

    /// @param linkNumber  link number of the records
    /// @throws RecipeError when two tags share memory, or the tags do not fit into the buffer
    RecipePlan(const std::vector<Tag>& tags, int linkNumber);

    QVector<_RCP_VAR_PRO> downloadRecords() const;
    QVector<_RCP_VAR_PRO> uploadRecords() const;

    /// Bytes that the recipe takes in the driver's buffer.
    int bufferBytes() const
    {
        return 2 * m_words;
    }

    /// The buffer with the tags' values.
    /// @param values  by tag, in the format of intf_setData
    QByteArray buffer(const std::vector<QByteArray>& values) const;

    /// The value of a word tag in an uploaded buffer. Not for bits.
    QByteArray value(size_t tag, const QByteArray& buffer) const;

private:
    struct Unit
    {
        int station;
        QString area;
        int number;
        size_t tag;
        int unitOfTag;
    };

    void sortUnits();
    void checkShared() const;
    void layOut();
    bool continues(size_t unit) const;

    std::vector<Tag> m_tags;
    const int m_linkNumber;
    std::vector<Unit> m_units; ///< in the order of the records
    std::vector<_RCP_VAR_PRO> m_records;
    std::vector<std::vector<int>> m_bytePlaces; ///< offset in the buffer, by tag and unit
    int m_words = 0;
};

#endif
