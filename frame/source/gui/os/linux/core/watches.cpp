#include "gui/os/linux/core/watches.h"
#include <glib-unix.h>

namespace Tessarine {
namespace {
class SourceWatch : public Watch {
public:
    explicit SourceWatch(std::function<void()> function) : callback(std::move(function)) {}
    ~SourceWatch() override {
        g_source_destroy(source);
        g_source_unref(source);
    }

    void attach(GSource* made, GSourceFunc function) {
        source = made;
        g_source_set_callback(source, function, this, nullptr);
        g_source_attach(source, nullptr);
    }

    static gboolean onSignal(gpointer self) {
        const std::function<void()> held = static_cast<SourceWatch*>(self)->callback;  // it may end the watch
        held();
        return G_SOURCE_CONTINUE;
    }
    static gboolean onInput(gint, GIOCondition, gpointer self) { return onSignal(self); }

private:
    std::function<void()> callback;
    GSource* source = nullptr;
};

std::unique_ptr<Watch> watchFor(int descriptor, GIOCondition conditions, std::function<void()> callback) {
    auto watch = std::make_unique<SourceWatch>(std::move(callback));
    watch->attach(g_unix_fd_source_new(descriptor, conditions), G_SOURCE_FUNC(SourceWatch::onInput));
    return watch;
}
}  // namespace

std::unique_ptr<Watch> watchInput(int descriptor, std::function<void()> callback) {
    return watchFor(descriptor, GIOCondition(G_IO_IN | G_IO_HUP | G_IO_ERR), std::move(callback));
}

std::unique_ptr<Watch> watchExceptions(int descriptor, std::function<void()> callback) {
    return watchFor(descriptor, GIOCondition(G_IO_PRI | G_IO_ERR), std::move(callback));
}

std::unique_ptr<Watch> watchSignal(int signal, std::function<void()> callback) {
    auto watch = std::make_unique<SourceWatch>(std::move(callback));
    watch->attach(g_unix_signal_source_new(signal), SourceWatch::onSignal);
    return watch;
}

}  // namespace Tessarine
