#pragma once
#include "pluginterfaces/base/ixmlparser.h"
#include "public.sdk/source/main/export.h"

namespace Tessarine {
class IBStream;
class XmlWriter2;
}  // namespace Tessarine

namespace TALV {
class TALV_DataManager;

/** What the user chose, from one run of the host to the next: "Setup.xml" in the user folder, with the name of the port
    and the channel of each device id.

    Owns      nothing; the data manager is borrowed.
    Results   nobody hears of a failure: what can't be read leaves the defaults, what can't be written the old file.
    Threads   the main thread. */
class TALV_EXPORT TALV_Setup : public Tessarine::INewXmlHandler {
public:
    explicit TALV_Setup(TALV_DataManager* manager) : dataManager(manager) {}
    TALV_Setup(const TALV_Setup&) = delete;
    TALV_Setup& operator=(const TALV_Setup&) = delete;

    int32_t queryInterface(const char* iid, void** obj) override;
    uint32_t addRef() override;
    uint32_t release() override;
    void startTag(Tessarine::INewXmlParser* parser, const char* name, const char** attributes) override;
    void endTag(Tessarine::INewXmlParser* /*parser*/, const char* /*name*/) override {}
    void charData(Tessarine::INewXmlParser* /*parser*/, const char* /*data*/, int32_t /*length*/) override {}
    void comment(Tessarine::INewXmlParser* /*parser*/, const char* /*text*/) override {}
    virtual ~TALV_Setup() = default;

    /** On disk there is always a whole file, the old one or the new one. */
    void save();
    /** Up to a fault in the file, what it says is taken. */
    void load();
    /** The data manager goes away. */
    void forgetDataManager() { dataManager = nullptr; }

    // one empty element each
    void writeStrValue(const char* tag, const char* text, Tessarine::XmlWriter2& writer);
    void writeDevIdChValue(const char* tag, int32_t id, int32_t channel, Tessarine::XmlWriter2& writer);

private:
    void write(Tessarine::IBStream* stream);
    void takePortName(const char** attributes);
    void takeConnection(const char** attributes);

    int32_t refCount = 1;
    TALV_DataManager* dataManager;  // borrowed, or null
};

}  // namespace TALV
