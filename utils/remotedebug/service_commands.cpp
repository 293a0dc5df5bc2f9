// The service answers the console's command conversation.
#include <zrad/remotedebug.h>

void RvRemoteDebugService::registerCommandMonitor() {
  RegMonitor(CNetCommand::iReqId, &CNetCommand::createNetCom);
}
