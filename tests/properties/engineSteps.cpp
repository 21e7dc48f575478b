#include "engineSteps.h"

#include "deviceAreas.h"

namespace {

enum { MOST_OFFSET = 80, MOST_COUNT = 40, BITS_OF_GROUP = 16, RECIPE_BLOCKS = 3, TOO_LONG = 600 };

const char* const ACTION_NAMES[] = {"exchange", "write", "read once", "poll", "recipe"};

const DeviceArea& areaOf(const EngineStep& step)
{
    return deviceAreas()[static_cast<size_t>(step.area)];
}

int numberOf(const EngineStep& step)
{
    return areaOf(step).lowest + step.offset;
}

bool isUpload(const EngineStep& step)
{
    return step.noise % 2 != 0;
}

rc::Gen<Action> action()
{
    return rc::gen::weightedElement<Action>({{12, Action::EXCHANGE},
                                             {6, Action::WRITE},
                                             {3, Action::READ_ONCE},
                                             {1, Action::POLL},
                                             {1, Action::RECIPE}});
}

rc::Gen<Reply> reply()
{
    return rc::gen::weightedElement<Reply>({{8, Reply::GOOD},
                                            {2, Reply::EMPTY},
                                            {2, Reply::DAMAGED},
                                            {1, Reply::CUT},
                                            {1, Reply::OTHER_STATION},
                                            {1, Reply::RANDOM}});
}

Units recipeUnits(const EngineStep& step, int block)
{
    // Now and then one that cannot be written, which must fail and not hang.
    return {step.station, areaOf(step).name, numberOf(step) + block * 2 * MOST_COUNT,
            step.noise % 7 == 0 ? int(TOO_LONG) : step.count};
}

} // namespace

std::ostream& operator<<(std::ostream& out, const EngineStep& step)
{
    out << ACTION_NAMES[static_cast<int>(step.action)];
    if (step.action == Action::EXCHANGE)
        return out << ": " << step.reply << " reply, noise " << step.noise;
    if (step.action == Action::POLL) return out << " " << step.count << " blocks";
    if (step.action == Action::RECIPE) out << (isUpload(step) ? " up" : " down");
    return out << " station " << step.station << " " << areaOf(step).name << " " << numberOf(step)
               << " x " << step.count << ", noise " << step.noise;
}

rc::Gen<std::vector<EngineStep>> engineSteps()
{
    const int areas = static_cast<int>(deviceAreas().size());
    return rc::gen::container<std::vector<EngineStep>>(rc::gen::build<EngineStep>(
        rc::gen::set(&EngineStep::action, action()),
        rc::gen::set(&EngineStep::station, rc::gen::weightedElement<int>({{6, 1}, {3, 2}, {1, 0}})),
        rc::gen::set(&EngineStep::area,
                     rc::gen::resize(rc::kNominalSize, rc::gen::inRange(0, areas))),
        rc::gen::set(&EngineStep::offset, rc::gen::inRange(0, int(MOST_OFFSET))),
        rc::gen::set(&EngineStep::count, rc::gen::inRange(1, int(MOST_COUNT))),
        rc::gen::set(&EngineStep::reply, reply()),
        rc::gen::set(&EngineStep::noise, rc::gen::inRange(0, 65536))));
}

void EngineRun::plan(const EngineStep& step)
{
    switch (step.action) {
    case Action::WRITE:
        bench.writeRun({step.station, areaOf(step).name, numberOf(step), step.count}, step.noise,
                       ++m_lastId);
        break;
    case Action::READ_ONCE:
        bench.readOnce(
            {step.station, areaOf(step).name, numberOf(step), areaOf(step).bits ? 1 : step.count},
            ++m_lastId);
        break;
    case Action::POLL:
        poll(step.count % 6);
        break;
    case Action::RECIPE:
        startRecipe(step);
        break;
    default:
        break;
    }
}

void EngineRun::poll(int blocks)
{
    std::vector<Units> all;
    for (int i = 0; i < blocks; ++i) {
        const DeviceArea& area = deviceAreas()[static_cast<size_t>(i)];
        all.push_back({1 + i % 2, area.name, area.lowest, BITS_OF_GROUP});
    }
    bench.poll(all);
}

/// A host leaves flags and set alone until a transfer is over.
void EngineRun::startRecipe(const EngineStep& step)
{
    if (bench.transferUnderWay()) return;
    std::vector<Units> records;
    for (int block = 0; block < 1 + step.noise % RECIPE_BLOCKS; ++block)
        records.push_back(recipeUnits(step, block));
    if (bench.setRecipe(records) == 0) return;
    bench.raise(isUpload(step) ? RECIPE_UPLOAD_FLAG : RECIPE_DOWNLOAD_FLAG);
}

Exchanged EngineRun::exchange(Reply reply, unsigned noise)
{
    Exchanged done = {0, m_again, 0, FRAME_PRO(), 0};
    done.given = intf_getSendFrame(&done.frame);
    done.kind = driver.frameKind;
    m_again = false;
    if (done.given == 0) return done;
    done.result = bench.answer(done.frame, reply, noise);
    m_again = done.result == REPLY_RETRY;
    return done;
}
