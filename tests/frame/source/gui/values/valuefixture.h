#pragma once
#include "base/source/updatehandler.h"
#include "gui/values/uvalue.h"
#include "pluginterfaces/gui/iplugcontroller.h"
#include "storage/fmstream.h"
#include "storage/fnewarchive.h"
#include "storage/fpersistent.h"
#include "tests/support/uncounted.h"
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace Tessarine {

using Log = std::vector<std::string>;

inline std::u16string textOf(IValue* value) {
    int32_t size = 0;
    value->toString2(nullptr, &size);
    std::u16string text(size_t(size), u'#');
    value->toString2(text.data(), nullptr);
    EXPECT_EQ(text.back(), u'\0');
    text.pop_back();
    return text;
}

/** What one value writes, the other reads; false: one of them failed. */
inline bool archived(const CmObject& from, CmObject& into, int64_t cutBytes = 0) {
    FMemoryStream written;
    FNewArchive writer(&written, true);
    if (!from.externalize(writer))
        return false;
    FMemoryStream stream(written.getData(), int32_t(written.getSize() - cutBytes));
    FNewArchive reader(&stream, false);
    return into.internalize(reader);
}

inline bool passedAttributes(const CmObject& from, CmObject& into) {
    const OPtr<FAttributes> attributes(new FAttributes);
    return from.storeAttributes(*attributes) && into.restoreAttributes(*attributes);
}

/** Notes each update as "<name> <message>", of what it watches until its end. */
class Watcher : public FObject {
public:
    explicit Watcher(Log& log, std::string name = "view") : log(log), name(std::move(name)) {}
    Watcher(Log& log, UValue* value) : Watcher(log) { value->addDependent(this); }
    ~Watcher() override { UpdateHandler::instance()->removeDependent(nullptr, this); }
    void update(FUnknown*, int32_t message) override { log.push_back(name + " " + std::to_string(message)); }

private:
    Log& log;
    const std::string name;
};

/** An owner that notes its updates, and "discard" where a session was given up; it counts its living objects. */
class Owner : public CmObject {
public:
    explicit Owner(Log& log) : log(log) { ++living; }
    ~Owner() override { --living; }
    using CmObject::update;
    void update(CmObject* object, int32_t message) override {
        const auto* value = classCast<UValue>(object);
        const bool discarding = value && (value->getState() & UValue::kDiscarding);
        log.push_back((discarding ? "discard " : "owner ") + std::to_string(message));
        if (failing)
            throw std::string("owner fails");
    }
    int32_t notify(FMessage*) override {
        log.push_back("notify");
        return 1;
    }

    static inline int32_t living = 0;
    bool failing = false;

private:
    Log& log;
};

/** A plug-in's controller, which may take part in edit sessions. */
class Controller : public Uncounted<IPlugController4> {
public:
    Controller(Log& log, bool takesPart) : log(log), takesPart(takesPart) {}
    int32_t queryInterface(const char* iid, void** obj) override {
        const bool found = (takesPart && answerInterface<IPlugController4>(this, iid, obj)) ||
                           answerInterface<IPlugController>(this, iid, obj) ||
                           answerInterface<FUnknown>(this, iid, obj);
        return found ? kResultOk : noInterface(obj);
    }
    IParameter* getParameter(const char*) override { return nullptr; }
    void parameterChanged(IParameter* parameter, int32_t tag) override {
        note("changed " + std::to_string(tag) + "=", parameter);
    }
    void beginEdit(IParameter* parameter) override { note("begin ", parameter); }
    void endEdit(IParameter* parameter) override { note("end ", parameter); }

private:
    void note(const std::string& what, IParameter* parameter) {
        log.push_back(what + std::to_string(parameter->getValueInt()));
    }

    Log& log;
    const bool takesPart;
};

/** A real update handler and a log that the test reads. */
class ValueTest : public testing::Test {
protected:
    ValueTest() : handler(UpdateHandler::instance()) {
        if (!handler)
            handler = OPtr<UpdateHandler>(new UpdateHandler);
    }
    /** The next turn of the main loop. */
    Log flush() {
        handler->triggerDeferedUpdates(nullptr);
        return take();
    }
    Log take() { return std::exchange(log, {}); }

    IPtr<UpdateHandler> handler;
    Log log;
};

}  // namespace Tessarine
