#pragma once
#include "base/source/fstring.h"
#include "base/source/tarray.h"
#include "base/source/tdlinkedlist.h"
#include "pluginterfaces/base/iupdatehandler.h"
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/gui/ivalue.h"
#include "public.sdk/source/main/export.h"
#include "source/TALV_Extension/TALV_Common.h"

namespace TALV {

/** All that is known of the hardware: the values of each device found, the serial ports, and which device is assigned
    to which channel. The values are made by the host, which must be able to make all three kinds. It knows nothing of
    the protocol.

    Owns      a reference to each value, the devices' dictionaries, and until removeAllCOMPort() the names of the ports.
              Host and dependent are borrowed and outlive it.
    Threads   the main thread. */
class TALV_EXPORT TALV_DataManager {
public:
    using ParamDictionary = Tessarine::TDictionary<TALV_ParamId, Tessarine::OPtr<Tessarine::IValue>>;

    /** The dependent hears of each change of a device's values. */
    TALV_DataManager(Tessarine::IHostClasses* hostClasses, Tessarine::IDependent* dependent);
    TALV_DataManager(const TALV_DataManager&) = delete;
    TALV_DataManager& operator=(const TALV_DataManager&) = delete;
    virtual ~TALV_DataManager();

    /** Makes the two fixed values and the entries of all device ids; once, before all else. */
    void intialize();
    /** Makes the values of a device; nothing when it is known. */
    void addDevice(unsigned char devId);
    void addOnOffValue(ParamDictionary* dictionary, TALV_ParamId id, bool defaultValue);
    /** The text is a literal. */
    void addStringValue(ParamDictionary* dictionary, TALV_ParamId id, const char* text);
    /** The value itself starts at what the host gives a new one, not at its default. */
    void addIntValue(ParamDictionary* dictionary, TALV_ParamId id, int32_t min, int32_t max, int32_t defaultValue);
    /** paramId is kPrmNone when the object is no value of a known device; devId means nothing then. */
    PrmInfo getParamInfo(const Tessarine::IValue* value) const;
    /** Borrowed; null when device or parameter is unknown. */
    Tessarine::IValue* getParamIValue(const PrmInfo& info) const;
    /** Forgets all devices; ports and assignments stay. */
    void removeAllParams();

    /** The name is raw bytes. */
    void addCOMPort(const char* name, int32_t length);
    void removeAllCOMPort();
    /** Empty when there is none of that index. */
    Tessarine::String getCOMPort(int32_t index) const;
    Tessarine::String getCurrentCOMPortStr() const;

    /** The first device on that channel, or 0. -1 would find a device without a channel. */
    int32_t getDevIdByChForConnection(int32_t channel) const;

private:
    Tessarine::IHostClasses* hostClasses;  // borrowed

public:
    Tessarine::TDictionary<unsigned char, ParamDictionary*> devices;  // by device id; owned

private:
    Tessarine::IDependent* dependent;  // borrowed
    Tessarine::FInstancePtr<Tessarine::IUpdateHandler> updateHandler;
    Tessarine::TArray<char*> comPorts;  // owned

public:
    Tessarine::OPtr<Tessarine::IValue> comPortValue;         // name of the current port
    Tessarine::TDictionary<int32_t, int32_t> connections;    // device id to channel; always holds 1 to 255
    Tessarine::OPtr<Tessarine::IValue> isConnectionUpdated;  // toggles when connections have changed

private:
    Tessarine::IValue* createValue(const Tessarine::FUID& iid) const;
    /** Takes the value over. */
    void addValue(ParamDictionary* dictionary, TALV_ParamId id, Tessarine::IValue* value);
    bool canAddTo(const ParamDictionary* dictionary) const { return dictionary && updateHandler; }
    /** Those of the device as a whole, or those of one channel. */
    void addParams(ParamDictionary* dictionary, bool perChannel, int32_t channel);
};

}  // namespace TALV
