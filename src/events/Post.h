#ifndef MORVAQNDS_POST_H
#define MORVAQNDS_POST_H

#include "EventHandler.h"

/** `qnEventHandler::postMessage` for calls inside the library: not by way of the table of exported symbols. */
void postBox(qnEventHandler& handler, qnOutputChannel* output, qnData* box, qnObj::qnSendFlags mode);

#endif
