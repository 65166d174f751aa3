#include "base/fworkerlife.h"
#include "base/fworkerthread.h"

namespace Tessarine {

FWorkerLife::~FWorkerLife() {
    if (isGone)
        *isGone = true;
}

void FWorkerLife::perform(const FWorkRecord& record) {
    record.job->performThreadWork(record.data);
}

bool FWorkerLife::finish(const FWorkRecord& record) {
    const bool& gone = *isGone;  // stands on the thread's stack
    isFinishing = true;
    record.job->finished();
    if (gone)
        return false;
    isFinishing = false;
    return true;
}

bool FWorkerLife::beginEnd() {
    const FGuard guard(giveLock);
    return !stopping.exchange(true);
}

}  // namespace Tessarine
