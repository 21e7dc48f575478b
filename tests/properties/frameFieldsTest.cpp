// Every request against MODBUS: what its fields say of its own length and of its reply's.
// Lengths are those of MODBUS Application Protocol V1.1b3, 6.3 to 6.6, 6.11 and 6.12; the station
// byte and the checksum are those of MODBUS over Serial Line V1.02, 2.5.1.

#include "deviceAreas.h"
#include "figures.h"
#include "modbusChecksum.h"
#include "propertyBench.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace {

enum FrameUse { CYCLIC, ONE_SHOT, WRITE, DOWNLOAD, UPLOAD, HANDSHAKE };

enum {
    WRITE_MULTIPLE_COILS = 15,
    WRITE_MULTIPLE_REGISTERS = 16,
    READ_INPUTS = 4,
    GROUP = 16,
    MOST_WORDS_WRITTEN = 507,
    MOST_BITS_WRITTEN = 1024,
    MOST_READ = 2000,
    WITHOUT_DATA = 8,
    BEFORE_DATA = 7,
    CHECKSUM = 2
};

const char* const USE_NAMES[] = {"cyclic read", "one-shot read", "write",
                                 "download",    "upload",        "handshake"};

/// One variable, and how it comes to be asked for.
struct DrawnFrame
{
    FrameUse use;
    int station;
    int area;
    int unit; ///< from the area's first one on, wrapped at its end
    int size;
};

const DeviceArea& areaOf(const DrawnFrame& drawn)
{
    return deviceAreas()[static_cast<size_t>(drawn.area)];
}

int numberOf(const DrawnFrame& drawn)
{
    const DeviceArea& area = areaOf(drawn);
    return area.lowest + drawn.unit % (area.highest - area.lowest + 1);
}

int countOf(const DrawnFrame& drawn)
{
    if (drawn.use == WRITE) return 1;
    if (drawn.use != DOWNLOAD) return drawn.size;
    const int most = areaOf(drawn).bits ? int(MOST_BITS_WRITTEN) : int(MOST_WORDS_WRITTEN);
    return 1 + (drawn.size - 1) % most;
}

std::ostream& operator<<(std::ostream& out, const DrawnFrame& drawn)
{
    return out << USE_NAMES[drawn.use] << " of station " << drawn.station << " "
               << areaOf(drawn).name << " " << numberOf(drawn) << " x " << countOf(drawn);
}

const std::vector<FrameUse> REQUESTS = {CYCLIC, ONE_SHOT, WRITE, DOWNLOAD, UPLOAD};

/// At full size from the first draw on; it is what is drawn that shrinks.
template <typename T> rc::Gen<T> wide(const rc::Gen<T>& gen)
{
    return rc::gen::resize(rc::kNominalSize, gen);
}

rc::Gen<DrawnFrame> drawnFrame(const std::vector<FrameUse>& uses)
{
    const int areas = static_cast<int>(deviceAreas().size());
    const auto size = rc::gen::oneOf(rc::gen::inRange(1, 20), rc::gen::inRange(1, int(MOST_READ)));
    const auto station =
        rc::gen::weightedOneOf<int>({{9, wide(rc::gen::inRange(0, 248))}, {1, rc::gen::just(0)}});
    return rc::gen::build<DrawnFrame>(
        rc::gen::set(&DrawnFrame::use, rc::gen::elementOf(uses)),
        rc::gen::set(&DrawnFrame::station, station),
        rc::gen::set(&DrawnFrame::area, wide(rc::gen::inRange(0, areas))),
        rc::gen::set(&DrawnFrame::unit, wide(rc::gen::inRange(0, 65536))),
        rc::gen::set(&DrawnFrame::size, wide(size)));
}

/// One of the uses, each of which must come.
DrawnFrame drawnCase(const std::vector<FrameUse>& uses)
{
    countCase();
    const DrawnFrame drawn = *drawnFrame(uses);
    for (const FrameUse use : uses)
        tally(std::string(USE_NAMES[use]) + "s", 0);
    tally(std::string(USE_NAMES[drawn.use]) + "s");
    return drawn;
}

Units unitsOf(const DrawnFrame& drawn)
{
    return {drawn.station, areaOf(drawn).name, numberOf(drawn), countOf(drawn)};
}

void startRecipe(PropertyBench& bench, const DrawnFrame& drawn, RecipeFlag flag)
{
    bench.setRecipe({unitsOf(drawn)});
    bench.raise(flag);
}

void ask(PropertyBench& bench, const DrawnFrame& drawn)
{
    switch (drawn.use) {
    case CYCLIC:
        bench.poll({unitsOf(drawn)});
        break;
    case ONE_SHOT:
        bench.readOnce(unitsOf(drawn), 1);
        break;
    case WRITE:
        bench.writeRun(unitsOf(drawn), drawn.size, 1);
        break;
    case DOWNLOAD:
        startRecipe(bench, drawn, RECIPE_DOWNLOAD_FLAG);
        break;
    case UPLOAD:
        startRecipe(bench, drawn, RECIPE_UPLOAD_FLAG);
        break;
    default:
        driver.handshakePending = 1;
    }
}

/// The frame that a driver with nothing else to do offers.
FRAME_PRO frameFor(PropertyBench& bench, const DrawnFrame& drawn)
{
    ask(bench, drawn);
    FRAME_PRO frame;
    RC_ASSERT(intf_getSendFrame(&frame) == 1);
    return frame;
}

int wordAt(const FRAME_PRO& frame, int at)
{
    return frame.sendBuf[at] << 8 | frame.sendBuf[at + 1];
}

bool isRead(const FRAME_PRO& frame)
{
    return frame.sendBuf[1] <= READ_INPUTS;
}

bool carriesData(const FRAME_PRO& frame)
{
    return frame.sendBuf[1] == WRITE_MULTIPLE_COILS || frame.sendBuf[1] == WRITE_MULTIPLE_REGISTERS;
}

int dataBytes(const FRAME_PRO& frame)
{
    const int quantity = wordAt(frame, 4);
    return frame.sendBuf[1] == WRITE_MULTIPLE_COILS ? (quantity + 7) / 8 : 2 * quantity;
}

int replyLengthOf(const FRAME_PRO& frame)
{
    if (frame.sendBuf[0] == 0) return 0;
    return isRead(frame) ? 5 + 2 * wordAt(frame, 4) : 8;
}

} // namespace

RC_GTEST_PROP(EveryRequest, IsAsLongAsItsFieldsSay, ())
{
    // Only a download can have more than 255 data bytes.
    const DrawnFrame drawn =
        drawnCase({CYCLIC, ONE_SHOT, WRITE, UPLOAD, DOWNLOAD, DOWNLOAD, DOWNLOAD});
    PropertyBench bench(3, 125);
    const FRAME_PRO frame = frameFor(bench, drawn);
    tally("without data bytes", !carriesData(frame));
    tally("with more than 255", carriesData(frame) && dataBytes(frame) > 255);
    if (!carriesData(frame)) {
        RC_ASSERT(frame.sendLen == int(WITHOUT_DATA));
        return;
    }
    RC_ASSERT(frame.sendLen == BEFORE_DATA + dataBytes(frame) + CHECKSUM);
    // More than 255 data bytes do not fit the field; the device takes its low byte.
    RC_ASSERT(int(frame.sendBuf[BEFORE_DATA - 1]) == dataBytes(frame) % 256);
}

RC_GTEST_PROP(EveryRequest, EndsWithTheChecksumOfItsBytes, ())
{
    const DrawnFrame drawn = drawnCase(REQUESTS);
    PropertyBench bench(3, 125);
    const FRAME_PRO frame = frameFor(bench, drawn);
    RC_ASSERT(frame.sendLen > int(CHECKSUM));
    const std::vector<unsigned char> sent(frame.sendBuf, frame.sendBuf + frame.sendLen);
    RC_ASSERT(sent == frameWith(std::vector<unsigned char>(sent.begin(), sent.end() - CHECKSUM)));
}

RC_GTEST_PROP(EveryRequest, NamesTheLengthOfItsReply, ())
{
    const DrawnFrame drawn = drawnCase(REQUESTS);
    PropertyBench bench(3, 125);
    const FRAME_PRO frame = frameFor(bench, drawn);
    const bool read = isRead(frame) && drawn.station != 0;
    tally("broadcasts", drawn.station == 0);
    RC_ASSERT(frame.recvLen == replyLengthOf(frame));
    RC_ASSERT(frame.dataStart == (read ? 3 : 0));
    RC_ASSERT(frame.itemCount == (read ? frame.var.count : 0));
}

RC_GTEST_PROP(EveryRequest, IsOfTheStationAndAreaAskedFor, ())
{
    const DrawnFrame drawn = drawnCase(REQUESTS);
    PropertyBench bench(3, 125);
    const FRAME_PRO frame = frameFor(bench, drawn);
    RC_ASSERT(int(frame.sendBuf[0]) == drawn.station);
    RC_ASSERT(frame.var.station == drawn.station);
    RC_ASSERT(frame.var.addr == numberOf(drawn));
    RC_ASSERT(frame.var.regName.toStdString() == areaOf(drawn).name);
    const bool inputs = areaOf(drawn).name[0] == 'I';
    tally("reads of inputs", isRead(frame) && inputs);
    if (isRead(frame)) RC_ASSERT(int(frame.sendBuf[1]) == (inputs ? 4 : 3));
}

RC_GTEST_PROP(EveryReadRequest, AsksForTheRegistersOfItsUnitsAndNoOther, ())
{
    const DrawnFrame drawn = drawnCase({CYCLIC, ONE_SHOT, UPLOAD});
    PropertyBench bench(3, 125);
    const FRAME_PRO frame = frameFor(bench, drawn);
    const DeviceArea& area = areaOf(drawn);
    tally("of bits", area.bits);
    const int perRegister = area.bits ? int(GROUP) : 1;
    const int firstUnit = frame.var.addr - area.lowest;
    const int lastUnit = firstUnit + frame.var.count - 1;
    RC_ASSERT(wordAt(frame, 2) == area.lowest + firstUnit / perRegister);
    RC_ASSERT(wordAt(frame, 2) + wordAt(frame, 4) - 1 == area.lowest + lastUnit / perRegister);
}

RC_GTEST_PROP(EveryWriteRequest, NamesItsFirstUnitAndHowMany, ())
{
    const DrawnFrame drawn = drawnCase({WRITE, DOWNLOAD});
    PropertyBench bench(3, 125);
    const FRAME_PRO frame = frameFor(bench, drawn);
    RC_ASSERT(wordAt(frame, 2) == numberOf(drawn));
    RC_ASSERT(carriesData(frame) == (countOf(drawn) != 1));
    tally("with a count", carriesData(frame));
    if (carriesData(frame)) RC_ASSERT(wordAt(frame, 4) == countOf(drawn));
}

RC_GTEST_PROP(TheHandshake, HasNoBytesAndNoReplyWhateverElseIsPlanned, ())
{
    const DrawnFrame other = drawnCase(REQUESTS);
    PropertyBench bench(3, 125);
    ask(bench, other);
    const FRAME_PRO frame = frameFor(bench, {HANDSHAKE, 1, 0, 0, 1});
    RC_ASSERT(frame.sendLen == 0);
    RC_ASSERT(frame.recvLen == 0);
    RC_ASSERT(frame.dataStart == 0);
    RC_ASSERT(frame.itemCount == 0);
}
