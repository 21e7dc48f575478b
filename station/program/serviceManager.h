#ifndef SERVICE_MANAGER_H
#define SERVICE_MANAGER_H

// What the service manager (systemd) is told. Without one, nothing happens.

/// The station serves its page.
void tellReady();

/// The station reads its configuration again; tellReady() follows.
void tellReloading();

/// The station ends.
void tellStopping();

#endif
