#pragma once
#include "public.sdk/source/main/export.h"
#include <cstdint>

/** The protocol between the extension and the head amps: records to frames and back. A frame is a length byte, a
    command, a device id, a payload and a checksum; the length counts the bytes behind it. Several devices share the
    line. */

namespace TALV {

/** The kind of a message. In a record to send, it says which frame to build; in a parsed one, the kind of a request
    says that its answer has come. kMessageMeterMode is sent as the mode and parsed from meter data. */
enum MessageType : int32_t {
    kMessageNone,
    kMessageDevId,
    kMessageDevMode,
    kMessageReqDevModeDevName,
    kMessageWordClock,
    kMessageReqWordClock,
    kMessageGain,
    kMessageReqGain,
    kMessagePlus48V,
    kMessageReqPlus48V,
    kMessageHPF,
    kMessageReqHPF,
    kMessageMeterMode,
    kMessageGainTrim,
    kMessageReqGainTrim,
    kMessagePanelLock,
    kMessageReqPanelLock,
    kMessageBrightness,
    kMessageReqBrightness,
    kMessageReqPlus48VMaster,
    kMessageHPFFreq,
    kMessageReqHPFFreq,
    kNumMessageTypes
};

/** What a frame says; zero it before use. All values are wire bytes. Arrays are indexed by channel, whatever the first
    channel of a message is; start and count say which channels it is about. */
struct MessagePrm {
    MessageType type;
    uint8_t devId;
    int32_t devMode;
    char devName[8];  // not terminated
    int32_t wordClock;
    uint8_t gain[8];
    uint8_t gainStart, gainCount;
    uint8_t plus48V[8];
    uint8_t plus48VStart, plus48VCount;
    uint8_t hpf[8];
    uint8_t hpfStart, hpfCount;
    uint8_t meter[8];
    uint8_t meterMode;
    uint8_t gainTrim[8];
    uint8_t gainTrimStart, gainTrimCount;
    uint8_t panelLock;
    uint8_t brightness;
    uint8_t plus48VMaster;
    uint8_t hpfFreq[8];
    uint8_t hpfFreqStart, hpfFreqCount;
};

/** Builds and parses frames.

    Building   the number of bytes written; 0, and nothing written, for a null buffer, one that is too small, or
               channels beyond the eighth.
    Parsing    a frame that is too short or has a bad checksum leaves the record as it was; nothing resynchronises.
    Threads    building any thread; what touches the container of received bytes (parseMessage, ajustmentMessage,
               clearMessageContainer) the main thread. */
class TALV_EXPORT TALV_MessageFactory {
public:
    TALV_MessageFactory() = delete;

    /** Builds the frame of prm.type. */
    static int32_t createMessage(const MessagePrm& prm, unsigned char* buffer, int32_t size);

    static int32_t createDevIdMessage(const MessagePrm& prm, unsigned char* buffer, int32_t size);
    static int32_t createDevModeMessage(const MessagePrm& prm, unsigned char* buffer, int32_t size);
    static int32_t createReqDevModeDevNameMessage(const MessagePrm& prm, unsigned char* buffer, int32_t size);
    static int32_t createWordClockMessage(const MessagePrm& prm, unsigned char* buffer, int32_t size);
    static int32_t createReqWordClockMessage(const MessagePrm& prm, unsigned char* buffer, int32_t size);
    static int32_t createGainMessage(const MessagePrm& prm, unsigned char* buffer, int32_t size);
    static int32_t createReqGainMessage(const MessagePrm& prm, unsigned char* buffer, int32_t size);
    static int32_t createPlus48VMessage(const MessagePrm& prm, unsigned char* buffer, int32_t size);
    static int32_t createReqPlus48VMessage(const MessagePrm& prm, unsigned char* buffer, int32_t size);
    static int32_t createHPFMessage(const MessagePrm& prm, unsigned char* buffer, int32_t size);
    static int32_t createReqHPFMessage(const MessagePrm& prm, unsigned char* buffer, int32_t size);
    static int32_t createMeterModeMessage(const MessagePrm& prm, unsigned char* buffer, int32_t size);
    static int32_t createGainTrimMessage(const MessagePrm& prm, unsigned char* buffer, int32_t size);
    static int32_t createReqGainTrimMessage(const MessagePrm& prm, unsigned char* buffer, int32_t size);
    static int32_t createPanelLockMessage(const MessagePrm& prm, unsigned char* buffer, int32_t size);
    static int32_t createReqPanelLockMessage(const MessagePrm& prm, unsigned char* buffer, int32_t size);
    static int32_t createBrightnessMessage(const MessagePrm& prm, unsigned char* buffer, int32_t size);
    static int32_t createReqBrightnessMessage(const MessagePrm& prm, unsigned char* buffer, int32_t size);
    static int32_t createReqPlus48VMasterMessage(const MessagePrm& prm, unsigned char* buffer, int32_t size);
    static int32_t createHPFFreqMessage(const MessagePrm& prm, unsigned char* buffer, int32_t size);
    static int32_t createReqHPFFreqMessage(const MessagePrm& prm, unsigned char* buffer, int32_t size);

    /** Takes in received bytes, which may be none, and parses at most one frame; what is left waits for the next call.
        An unknown command sets prm.type to kMessageNone. */
    static void parseMessage(const unsigned char* data, int32_t size, MessagePrm& prm);

    // of one whole frame
    static void parseDevIdMessage(const unsigned char* data, int32_t size, MessagePrm& prm);
    static void parseDevModeDevNameMessage(const unsigned char* data, int32_t size, MessagePrm& prm);
    static void parseWordClockMessage(const unsigned char* data, int32_t size, MessagePrm& prm);
    static void parseGainMessage(const unsigned char* data, int32_t size, MessagePrm& prm);
    static void parsePlus48VMessage(const unsigned char* data, int32_t size, MessagePrm& prm);
    static void parseHPFMessage(const unsigned char* data, int32_t size, MessagePrm& prm);
    static void parseMeterDataMessage(const unsigned char* data, int32_t size, MessagePrm& prm);
    static void parseGainTrimMessage(const unsigned char* data, int32_t size, MessagePrm& prm);
    static void parsePanelLockMessage(const unsigned char* data, int32_t size, MessagePrm& prm);
    static void parseBrightnessMessage(const unsigned char* data, int32_t size, MessagePrm& prm);
    static void parsePlus48VMasterMessage(const unsigned char* data, int32_t size, MessagePrm& prm);
    static void parseHPFFreqMessage(const unsigned char* data, int32_t size, MessagePrm& prm);

    /** The complement of the sum of these bytes; 0 for null. */
    static unsigned char calcChecksum(const unsigned char* data, int32_t size);
    /** These bytes, the checksum among them, add up to 255. */
    static bool verifyChecksum(const unsigned char* data, int32_t size);

    /** Appends the received bytes to the container and moves the first frame out of it, when that is there whole and
        fits. The bytes of the frame, or 0. */
    static int32_t ajustmentMessage(const unsigned char* data, int32_t size, unsigned char* frame, int32_t frameSize);
    static void clearMessageContainer();
};

}  // namespace TALV
