#include <exchange/exchangeMachine.h>
#include <wire/frameShape.h>

// The first thing over an opened link is a fence: a read with a right checksum.
int main()
{
    ExchangeMachine machine((LineTiming(LineSettings())), ExchangeMachine::Settings());
    machine.linkOpened(0);
    machine.start(readRequest(1, READ_HOLDING, 3050, 1), false, 0);
    ExchangeMachine::Step step = machine.advance(0);
    while (step.send.isEmpty())
        step = machine.advance(step.wakeAt);
    return step.isFence && isRead(step.send) && hasRightChecksum(step.send) ? 0 : 1;
}
