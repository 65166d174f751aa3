#pragma once
#include "gui/os/linux/core/watches.h"

/** Ends the main loop in order. Main thread. */
void quitHost();

/** From now on SIGINT, SIGTERM and SIGHUP (unless it is ignored, as below nohup) wait until the main loop serves
    them. The first thing of main, before there are threads. */
void holdQuitSignals();
/** Quits when one of them came, also if it came before. */
std::unique_ptr<Tessarine::Watch> watchQuitSignals();
/** Can be read when one of them came; -1: they aren't held. */
int quitSignalsDescriptor();
