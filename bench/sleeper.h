#pragma once
#include <semaphore>
#include <thread>

/** A second thread that does nothing, so that locks and counts that a process with one thread may skip are paid. Make it
    static: from before the first row to the end of the program. */
class SleepingThread {
public:
    ~SleepingThread() {
        end.release();
        thread.join();
    }

private:
    std::binary_semaphore end{0};
    std::thread thread{[this] { end.acquire(); }};
};
