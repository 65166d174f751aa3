#pragma once
#include <functional>
#include <memory>

namespace Tessarine {

/** A source of the main loop that belongs to a program: as long as it lives, its callback runs on the main thread. */
class Watch {
public:
    virtual ~Watch() = default;
};

/** Calls when the descriptor can be read or was hung up. Borrowed: close it behind the watch. */
std::unique_ptr<Watch> watchInput(int descriptor, std::function<void()> callback);
/** Calls when the descriptor tells that something changed behind it, as tables of the kernel do. */
std::unique_ptr<Watch> watchExceptions(int descriptor, std::function<void()> callback);
/** Calls on the main thread after the signal came; it doesn't end the process any more. */
std::unique_ptr<Watch> watchSignal(int signal, std::function<void()> callback);

}  // namespace Tessarine
