#pragma once
#include "base/fhostclasses.h"
#include "base/source/updatehandler.h"
#include "gui/values/uvalue.h"
#include "pluginterfaces/gui/iplatform.h"
#include "pluginterfaces/host/iserialportnaming.h"
#include "tests/support/testfolder.h"
#include "tests/support/uncounted.h"
#include <algorithm>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

/** What tests of the extension have as their host: the framework's own values and update handler, and the services that
    a test switches on. */

namespace TALV::Test {
using namespace Tessarine;

/** A clock that each look at it moves. */
class TestPlatform : public Uncounted<IPlatform2> {
public:
    bool isActive() override { return true; }
    bool isDone() override { return done; }
    bool doUpdates() override { return true; }
    void setWaitCursor(bool) override {}
    bool isWaitCursorSet() override { return false; }
    bool waitDoubleClick() override { return false; }
    bool waitDrag() override { return false; }
    void showCursor(bool) override {}
    bool isInMainThread() override { return true; }
    int32_t getModifiers() override { return 0; }
    bool escapePressed() override { return false; }
    void sleep(int32_t) override {}
    uint32_t getTickCount() override {
        ++looks;
        return ticks += step;
    }
    bool isInModalMode() override { return false; }
    int32_t addIdleHandler(IIdleHandler*) override { return kResultOk; }
    int32_t removeIdleHandler(IIdleHandler*) override { return kResultOk; }
    int32_t beginPlugModal(const tchar*) override { return kResultFalse; }
    int32_t beginPlugModal2(IWindow*) override { return kResultFalse; }
    int32_t endPlugModal() override { return kResultFalse; }

    uint32_t ticks = 0, step = 1;  // milliseconds
    int32_t looks = 0;
    bool done = false;
};

class TestNaming : public Uncounted<ISerialPortNaming> {
public:
    const char* getFolder() const override { return folder.c_str(); }
    int32_t countPrefixes() const override { return int32_t(prefixes.size()); }
    const char* getPrefix(int32_t index) const override { return prefixes.at(size_t(index)).c_str(); }
    bool accepts(const char* name) const override { return refused != name; }

    std::string folder;  // with a closing "/"
    std::vector<std::string> prefixes = {"tty.", "ttyS"};
    std::string refused;
};

/** Values tell their dependents at once. */
class TestHost : public FHostClasses {
public:
    int32_t createClassInstance(const char* iid, void** obj) override {
        if (platform && answerInterface<IPlatform2>(platform, iid, obj))
            return kResultOk;
        if (naming && answerInterface<ISerialPortNaming>(naming, iid, obj))
            return kResultOk;
        const int32_t result = FHostClasses::createClassInstance(iid, obj);
        if (result == kResultOk && makesValue(iid))
            if (auto* value = classCast<UValue>(commonObject(static_cast<IValue*>(*obj))))
                value->setStraightUpdate(true);
        return result;
    }

    TestPlatform* platform = nullptr;
    TestNaming* naming = nullptr;

private:
    static bool makesValue(const char* iid) {
        return FUID::same(iid, IHostIntValue_iid) || FUID::same(iid, IHostOnOffValue_iid) ||
               FUID::same(iid, IHostStringValue_iid);
    }
};

/** Remembers what it heard, and does what a test wants then. */
class Listener : public Uncounted<IDependent> {
public:
    void update(FUnknown*, int32_t message) override {
        heard.push_back(message);
        if (then)
            then();
    }
    int64_t count(int32_t message) const { return std::ranges::count(heard, message); }

    std::vector<int32_t> heard;
    std::function<void()> then;
};

inline std::string contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/** The framework's update handler for the time of a test. */
class Updates {
public:
    Updates() : handler(FObject::gUpdateHandler ? nullptr : new UpdateHandler) {}
    ~Updates() {
        if (handler)
            handler->release();
    }
    Updates(const Updates&) = delete;
    Updates& operator=(const Updates&) = delete;

private:
    UpdateHandler* handler;
};

}  // namespace TALV::Test
