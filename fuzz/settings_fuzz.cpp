// The settings file, whatever stands in it: the store stays whole.
#include "base/fhostclasses.h"
#include "base/source/updatehandler.h"
#include "source/TALV_Extension/TALV_DataManager.h"
#include "source/TALV_Extension/TALV_Setup.h"
#include "storage/fmstream.h"
#include "storage/fxmlparser2.h"
#include <bitset>

using namespace Tessarine;
using namespace TALV;

namespace {
void demand(bool holds) {
    if (!holds)
        __builtin_trap();
}

class Store {
public:
    Store() { data.intialize(); }

    void load(const uint8_t* bytes, size_t size) {
        FMemoryStream stream(const_cast<uint8_t*>(bytes), int32_t(size));
        const OPtr<TALV_Setup> setup(new TALV_Setup(&data));
        FXmlParser2(setup.get(), nullptr).process(&stream);
    }
    void check() const {
        std::bitset<256> ids;
        for (const auto& connection : data.connections)
            ids.set(size_t(connection.key));
        demand(data.connections.total() == 255 && ids.count() == 255 && !ids[0]);
        data.getCurrentCOMPortStr();
    }

private:
    OPtr<UpdateHandler> updates{new UpdateHandler};
    FHostClasses host;
    TALV_DataManager data{&host, nullptr};
};
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Store store;
    store.load(data, size);
    store.check();
    return 0;
}
