#include "verbs/readOnce.h"

ReadOnce readOnce(HostProgram& host)
{
    host.connect();
    const int job = host.newJob();
    host.link().read(job, host.blocks());
    ReadOnce read;
    read.end = host.endOf(job);
    read.tags = host.values().tags();
    for (TagState& state : read.tags) {
        state.good = state.readAt >= 0;
        if (state.good)
            state.trouble.clear();
        else if (state.trouble.isEmpty())
            state.trouble = read.end.trouble;
    }
    return read;
}
