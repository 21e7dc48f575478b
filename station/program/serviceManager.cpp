#include "program/serviceManager.h"

#include <systemd/sd-daemon.h>

#include <ctime>

void tellReady()
{
    sd_notify(0, "READY=1");
}

/// The manager compares the time with that of its own request.
void tellReloading()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    sd_notifyf(0, "RELOADING=1\nMONOTONIC_USEC=%lld",
               static_cast<long long>(now.tv_sec) * 1000000 + now.tv_nsec / 1000);
}

void tellStopping()
{
    sd_notify(0, "STOPPING=1");
}
