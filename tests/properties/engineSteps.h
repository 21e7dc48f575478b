#ifndef ENGINE_STEPS_H
#define ENGINE_STEPS_H

#include "propertyBench.h"

#include <rapidcheck.h>

#include <ostream>
#include <vector>

// What a host may do between two frames, drawn at random.

enum class Action { EXCHANGE, WRITE, READ_ONCE, POLL, RECIPE };

struct EngineStep
{
    Action action;
    int station; ///< 0 is a broadcast
    int area;    ///< row of deviceAreas
    int offset;  ///< from the area's first address on
    int count;   ///< elements to write, units to read, or blocks to poll
    Reply reply;
    int noise; ///< chooses the reply's bytes, the written value and the way of a recipe
};

std::ostream& operator<<(std::ostream& out, const EngineStep& step);

/// Mostly exchanges, whose replies are mostly good.
rc::Gen<std::vector<EngineStep>> engineSteps();

/// What became of one call of intf_getSendFrame and the reply that followed.
struct Exchanged
{
    int given;  ///< result of intf_getSendFrame
    bool again; ///< the same frame as before
    int kind;   ///< a FrameKind
    FRAME_PRO frame;
    int result; ///< a ReplyResult
};

/// A host that does what the steps say.
class EngineRun
{
public:
    EngineRun(int retryLimit, int mergeLimit) : bench(retryLimit, mergeLimit) {}

    /// Everything but an exchange.
    void plan(const EngineStep& step);

    Exchanged exchange(Reply reply, unsigned noise);

    /// Blocks of whole 16-bit groups or of words, in as many areas.
    void poll(int blocks);

    PropertyBench bench;

private:
    void startRecipe(const EngineStep& step);

    bool m_again = false;
    int m_lastId = 100;
};

#endif
