#ifndef TYPED_ADDRESS_H
#define TYPED_ADDRESS_H

#include "driver/driverLibrary.h"
#include "plan/tag.h"
#include "plan/tagError.h"

#include <vector>

// Addresses as a person types them:
//
//   [STATION:]PLACE[:TYPE]
//
//   STATION  1 to 247; without it 1
//   PLACE    MW100, MX12.3           one value
//            MW0..MW62, MX0.0..1.7   all words or bits from the first address to the last
//            MW0+16                  16 values of the type from the address on
//   TYPE     as in a tag file, such as int16, float32:high or hex; without it bool or uint16
//
// The area may be in lower case, and a % may stand ahead of it. Every text below that a function
// returns is canonical: tagFromAddress() makes the same tag from it.

enum { MOST_RANGE_VALUES = 4096 }; ///< values of one range: all words of MW, all bits of QX

/// The tags of a typed address. Each tag is named by its own canonical text.
/// @throws TagFileError with the reason when the text is no valid address
std::vector<Tag> tagsFromAddress(const QString& text, const DriverLibrary& driver);

/// The only tag of a typed address.
/// @throws TagFileError also when the text is a range
Tag tagFromAddress(const QString& text, const DriverLibrary& driver);

/// `count` tags of the type of the first tag, each right behind the tag before. Each tag is named
/// by its own canonical text.
/// @param first  its number, area and type are valid
/// @param count  1 to MOST_RANGE_VALUES
/// @throws TagFileError when the area ends before the last tag
std::vector<Tag> consecutiveTags(const Tag& first, int count, const DriverLibrary& driver);

/// "MW100:float32:high", "2:MX12.3": the canonical text of the tag's place and type.
QString typedAddressText(const Tag& tag);

/// "MW100", or "2:MW100" when the station is not 1.
QString placeText(const Tag& tag);

/// Whether a text begins as a typed address does: with an area and a digit, behind a station or
/// not. The rest may be wrong.
bool looksLikeAddress(const QString& text, const DriverLibrary& driver);

/// The area and the address of "MW100" or "%mx12.3". The area is canonical when the driver knows
/// it.
struct AreaAndAddress
{
    QString area;
    QString address;
};
AreaAndAddress areaAndAddress(const QString& text, const DriverLibrary& driver);

#endif
