#include "mountwatch.h"
#include "collect/cmarray.h"
#include "gui/os/linux/core/watches.h"
#include "pluginterfaces/base/smartpointer.h"
#include "storage/ffilesystem.h"
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace Tessarine {
namespace {
constexpr const char* kMountTable = "/proc/self/mountinfo";  // tells whoever polls it of each change

/** The drives as they were last seen. */
class MountWatch {
public:
    MountWatch() : table(::open(kMountTable, O_RDONLY | O_CLOEXEC)), drives(currentDrives()) {
        if (table >= 0)
            watch = watchExceptions(table, [this] { compare(); });
    }
    ~MountWatch() {
        watch = nullptr;
        if (table >= 0)
            ::close(table);
    }
    MountWatch(const MountWatch&) = delete;
    MountWatch& operator=(const MountWatch&) = delete;

private:
    static OPtr<CmArray> currentDrives() {
        OPtr<CmArray> found(new CmArray);
        found->_ownsObjects = CmContainer::kTakesOver;
        gFileSystem->getDrives(*found);
        return found;
    }
    /** Those of one list that the other hasn't got. */
    static void tellOf(const CmArray& these, const CmArray& known, const char* event) {
        for (CmObject* drive : these)
            if (!known.contains(drive))
                gFileSystem->onMountEvent(event, *static_cast<FNPath*>(drive));
    }
    void compare() {
        const OPtr<CmArray> before = drives, now = currentDrives();
        drives = now;  // who is told may end the watch
        tellOf(*before, *now, "VolUnmount");
        tellOf(*now, *before, "VolMount");
    }

    int table;  // owned
    OPtr<CmArray> drives;
    std::unique_ptr<Watch> watch;
};

constinit MountWatch* current = nullptr;
}  // namespace

void watchMounts(bool state) {
    if (state == (current != nullptr))
        return;
    if (state)
        current = new MountWatch;
    else
        delete std::exchange(current, nullptr);
}

}  // namespace Tessarine
