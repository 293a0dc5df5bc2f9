// Until the command set is part of the build, a service starts with no monitor registered.
#include <zrad/remotedebug.h>

void RvRemoteDebugService::registerCommandMonitor() {}
