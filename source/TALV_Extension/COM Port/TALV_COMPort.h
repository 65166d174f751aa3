#pragma once
#include "base/source/fthread.h"
#include "pluginterfaces/base/smartpointer.h"
#include "pluginterfaces/host/iserialportnaming.h"
#include "source/TALV_Extension/COM Port/TALV_CircularBuffer.h"

namespace TALV {

/** What the reader thread calls, twice a second. */
class TALV_EXPORT COMPortThreadObserver {
public:
    virtual void callObserver() = 0;

protected:
    ~COMPortThreadObserver() = default;
};

/** The thread that polls the device. The observer is borrowed and must outlive it. run() starts it, again after a
 * cleanup(). */
class TALV_EXPORT COMPortThread : public Tessarine::FThread {
public:
    explicit COMPortThread(COMPortThreadObserver* observer);

    /** Ends the thread and waits for it: up to one pause between two polls. */
    void cleanup() override;
    void entry() override;
    /** false: the thread is to end. Any thread. */
    bool isContinued() const;

private:
    void setContinued(bool state);

    COMPortThreadObserver* observer;
    bool continueFlag = true;
    mutable Tessarine::FLock conditionLock{"LockForIsCondition"};  // guards continueFlag
};

/** Where ports are looked for and which names count: what the host says, or else the usual places. Names are raw bytes.
 */
class TALV_EXPORT TALV_PortNaming {
public:
    explicit TALV_PortNaming(Tessarine::IHostClasses* hostClasses) : hostNaming(hostClasses) {}

    /** With a closing "/". */
    const char* folder() const;
    bool accepts(const char* name) const;

private:
    bool hasPrefix(const char* name) const;

    Tessarine::FInstancePtr<Tessarine::ISerialPortNaming> hostNaming;  // null: the host has none
};

/** A serial port: a thread reads it into a ring, as records of a 32-bit count in the machine's byte order and so many
    bytes.

    Life      close it before it goes.
    Results   0 is done, 1 is not.
    Threads   the main thread, except receiveMessage, which runs in the reader thread. */
class TALV_EXPORT TALV_COMPort : public COMPortThreadObserver {
public:
    void callObserver() override { receiveMessage(); }
    TALV_COMPort() = default;
    TALV_COMPort(const TALV_COMPort&) = delete;
    TALV_COMPort& operator=(const TALV_COMPort&) = delete;
    virtual ~TALV_COMPort() = default;

    /** Makes ring and thread; once, before all else. */
    virtual void initialize();
    /** Opens the port that the data manager names. An open one must be closed first. */
    virtual int32_t openPort() = 0;
    /** 1: none was open. The bytes that weren't taken out are lost either way. */
    virtual int32_t closePort() = 0;
    /** Writes all of it, for up to two seconds. */
    virtual int32_t sendMessage(const unsigned char* data, int32_t size) = 0;
    /** Stores what the device has. 1: nothing. */
    virtual int32_t receiveMessage() = 0;
    /** Lists the ports in the data manager; a current port that isn't there any more becomes the first one. */
    virtual void updateCOMInfo() = 0;
    /** Takes whole records out of the ring, as many as fit, without anything between them. The bytes taken. */
    virtual int32_t readData(unsigned char* data, int32_t size);

protected:
    std::unique_ptr<COMPortThread> thread;
    std::unique_ptr<TALV_CircularBuffer> buffer;
};

}  // namespace TALV
