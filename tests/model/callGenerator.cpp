#include "callGenerator.h"

#include "editorCalls.h"
#include "initCalls.h"
#include "mergeCalls.h"
#include "randomWorld.h"
#include "recipeCalls.h"

#include <array>

namespace model {

namespace {

// More calls to one driver than this only make its cache longer, and so each call slower.
enum { FEWEST_CALLS = 60, MOST_CALLS = 700, LONG_QUEUE = 520, WORD_MODE = 0 };

class CallGenerator
{
public:
    explicit CallGenerator(std::uint64_t seed)
        : m_random(seed), m_world(m_random), m_recipes(m_random, m_world)
    {
        chooseHabits();
    }

    std::vector<Call> take()
    {
        const size_t length = static_cast<size_t>(m_random.between(FEWEST_CALLS, MOST_CALLS));
        initialise();
        if (!m_random.oneIn(15)) m_calls.push_back(CallbackCall{true});
        if (!m_random.oneIn(4)) merge();
        while (m_calls.size() < length)
            turn();
        return std::move(m_calls);
    }

private:
    void chooseHabits();
    void turn();
    void initialise()
    {
        m_calls.push_back(randomInit(m_random, m_context));
    }
    void merge()
    {
        m_calls.push_back(mergeOfAnyKeys(m_random, m_world));
    }
    void mergeNeighbours()
    {
        m_calls.push_back(mergeOfNeighbours(m_random, m_world));
    }
    void oneShot();
    void manyOneShots();
    void fullOneShots();
    void write();
    void longWrite();
    void writeBurst();
    void read();
    void exchange(int count);
    void shortExchange()
    {
        exchange(m_random.between(1, 4));
    }
    void longExchange()
    {
        exchange(m_random.between(8, 60));
    }
    void strayReply()
    {
        m_calls.push_back(reply());
    }
    ReplyCall reply();
    void recipeSet()
    {
        m_calls.push_back(m_recipes.set(m_context));
    }
    void recipeFlag()
    {
        m_calls.push_back(m_recipes.flag());
    }
    void recipeTransfer();
    void shrinkingRecipe();
    void goodExchange(int count);
    void fillBuffer();
    void callback();
    void edit()
    {
        m_calls.push_back(editorCall(m_random, m_world));
    }

    using Turn = void (CallGenerator::*)();
    struct Habit
    {
        Turn turn;
        int weight;
    };
    static const std::array<Habit, 19> HABITS;

    RandomSource m_random;
    RandomWorld m_world;
    RecipeCalls m_recipes;
    std::vector<Call> m_calls;
    std::vector<int> m_turnWeights;
    std::vector<int> m_replyWeights;
    int m_context = 0;
};

const std::array<CallGenerator::Habit, 19> CallGenerator::HABITS = {{
    {&CallGenerator::shortExchange, 60},  {&CallGenerator::longExchange, 10},
    {&CallGenerator::write, 20},          {&CallGenerator::writeBurst, 5},
    {&CallGenerator::oneShot, 15},        {&CallGenerator::manyOneShots, 2},
    {&CallGenerator::fullOneShots, 1},    {&CallGenerator::read, 20},
    {&CallGenerator::merge, 8},           {&CallGenerator::mergeNeighbours, 4},
    {&CallGenerator::edit, 15},           {&CallGenerator::recipeTransfer, 8},
    {&CallGenerator::shrinkingRecipe, 2}, {&CallGenerator::recipeSet, 2},
    {&CallGenerator::recipeFlag, 2},      {&CallGenerator::fillBuffer, 4},
    {&CallGenerator::initialise, 2},      {&CallGenerator::strayReply, 3},
    {&CallGenerator::callback, 1},
}};

void CallGenerator::chooseHabits()
{
    // Some kinds are left out altogether, so that others meet more often.
    static const std::vector<int> FACTORS = {0, 1, 1, 2, 4};
    for (const Habit& habit : HABITS)
        m_turnWeights.push_back(habit.weight * m_random.pick(FACTORS));
    m_turnWeights[0] += 10;
    const int noise = m_random.pick(std::vector<int>{0, 1, 1, 4, 12});
    m_replyWeights.assign(static_cast<size_t>(ReplyKind::COUNT), noise);
    m_replyWeights[static_cast<size_t>(ReplyKind::GOOD)] = 100;
}

void CallGenerator::turn()
{
    (this->*HABITS[m_random.weighted(m_turnWeights)].turn)();
    if (m_random.oneIn(400)) longWrite();
}

void CallGenerator::oneShot()
{
    const Key key = m_world.key();
    m_calls.push_back(OneShotCall{key, m_random.between(0, 9)});
    if (m_random.oneIn(3)) m_calls.push_back(OneShotCall{key, m_random.between(0, 9)});
}

void CallGenerator::manyOneShots()
{
    Key key = m_world.key();
    key.count = m_random.pick(std::vector<int>{7, 40, 600, 1100});
    m_calls.push_back(OneShotCall{key, m_random.between(0, 9)});
}

/// With a merge limit of 1 each unit is a block of its own: more of them than are queued.
void CallGenerator::fullOneShots()
{
    const std::string properties = std::to_string(m_context) + "#0#12#3#1";
    m_calls.push_back(InitCall{true, true, true, true, true, properties, 0});
    Key key = m_world.key();
    key.area = m_world.area();
    key.unitMode = WORD_MODE;
    key.count = m_random.between(LONG_QUEUE - 20, LONG_QUEUE + 20);
    m_calls.push_back(OneShotCall{key, m_random.between(0, 9)});
    shortExchange();
    oneShot();
}

void CallGenerator::write()
{
    SetDataCall call;
    call.station = m_world.station();
    call.area = m_world.areaOrStranger();
    call.addr = m_world.addr(call.area);
    call.count = m_random.oneIn(3) ? m_random.between(0, 12) : 1;
    call.values = m_world.values(call.area, call.count);
    call.varId = m_random.between(-1, 99);
    m_calls.push_back(call);
}

void CallGenerator::writeBurst()
{
    const int count = m_random.between(2, 8);
    for (int i = 0; i < count; ++i)
        write();
}

void CallGenerator::longWrite()
{
    SetDataCall call;
    call.station = m_world.station();
    call.area = m_world.area();
    call.addr = m_world.addr(call.area);
    call.count = m_random.between(LONG_QUEUE - 20, LONG_QUEUE + 20);
    call.values = m_world.values(call.area, call.count);
    call.varId = m_random.between(-1, 99);
    m_calls.push_back(call);
    if (m_random.oneIn(3)) exchange(LONG_QUEUE + 60);
}

void CallGenerator::read()
{
    GetDataCall call;
    call.station = m_world.station();
    call.area = m_world.areaOrStranger();
    call.addr = m_world.addr(call.area);
    call.count = m_world.count(call.area);
    call.nullPointer = m_random.oneIn(30);
    m_calls.push_back(call);
}

ReplyCall CallGenerator::reply()
{
    const auto kind = static_cast<ReplyKind>(m_random.weighted(m_replyWeights));
    return {kind, static_cast<unsigned>(m_random.next() & 0xFFFFu)};
}

void CallGenerator::exchange(int count)
{
    for (int i = 0; i < count; ++i) {
        m_calls.push_back(NextFrameCall{m_random.oneIn(80)});
        if (m_random.oneIn(20)) m_calls.push_back(NextFrameCall{false});
        m_calls.push_back(reply());
    }
}

void CallGenerator::recipeTransfer()
{
    if (m_random.oneIn(2)) recipeSet();
    m_calls.push_back(m_recipes.raisedFlag());
    exchange(m_random.between(0, 6));
    if (m_random.oneIn(4)) recipeFlag();
    if (m_random.oneIn(8)) initialise();
    if (m_random.oneIn(3)) m_calls.push_back(m_recipes.smallSet(m_context));
    exchange(m_random.between(0, 12));
    // Without blocks to send, raised flags hold up everything else.
    if (m_random.oneIn(2)) {
        m_calls.push_back(FlagCall{true, 0});
        m_calls.push_back(FlagCall{false, 0});
    }
}

/// Another set, with fewer blocks, in the middle of a transfer.
void CallGenerator::shrinkingRecipe()
{
    m_calls.push_back(m_recipes.largeSet(m_context));
    m_calls.push_back(m_recipes.raisedFlag());
    goodExchange(m_random.between(1, 5));
    if (m_random.oneIn(2)) m_calls.push_back(NextFrameCall{false});
    m_calls.push_back(m_recipes.smallSet(m_context));
    if (m_random.oneIn(4)) recipeFlag();
    goodExchange(m_random.between(1, 5));
}

void CallGenerator::goodExchange(int count)
{
    for (int i = 0; i < count; ++i) {
        m_calls.push_back(NextFrameCall{false});
        m_calls.push_back(ReplyCall{ReplyKind::GOOD, static_cast<unsigned>(m_random.below(65536))});
    }
}

void CallGenerator::fillBuffer()
{
    m_calls.push_back(FillBufferCall{static_cast<unsigned>(m_random.next() & 0xFFFFu)});
}

void CallGenerator::callback()
{
    m_calls.push_back(CallbackCall{!m_random.oneIn(3)});
}

} // namespace

std::vector<Call> randomCalls(std::uint64_t seed)
{
    return CallGenerator(seed).take();
}

} // namespace model
