#ifndef FUZZ_RUN_H
#define FUZZ_RUN_H

#include "comparedCalls.h"
#include "fuzzInput.h"

#include <initializer_list>

/// One input's calls, made of a driver as new and of its model. Ends the process at the first call
/// that the two do not agree on, so that libFuzzer keeps the input.
class FuzzRun
{
public:
    enum Kind {
        ASK_IDENTITY,
        CHECK,
        CHECK_VALIDITY,
        DESCRIBE,
        LIST_AREAS,
        COPY_SERIES,
        POLL,
        READ_ONCE,
        SET_RECIPE,
        MOVE_FLAG,
        FILL_RECIPE,
        WRITE,
        READ,
        EXCHANGE
    };

    FuzzRun(const uint8_t* data, size_t size);
    ~FuzzRun();
    FuzzRun(const FuzzRun&) = delete;
    FuzzRun& operator=(const FuzzRun&) = delete;

    bool isLeft()
    {
        return input.isLeft();
    }

    /// Starts the driver with these limits, or with this property text.
    void start(int retryLimit, int mergeLimit);
    void start(const std::string& properties);

    /// A call of one of these kinds, whose arguments the input has.
    void make(std::initializer_list<Kind> kinds);

    FuzzInput input;

private:
    model::Key key();
    model::RecipeRecord record();
    model::Call callOf(Kind kind);
    model::Call identity();
    model::Call recipe();
    void exchange(bool isGood);
    void make(const model::Call& call);

    model::ComparedCalls m_compared;
};

#endif
