#pragma once
#include "source/TALV_Extension/COM Port/TALV_COMPort.h"
#include <termios.h>

namespace TALV {
class TALV_DataManager;

/** The port on a POSIX system: 38400 baud, 8 data bits, no parity, one stop bit, no flow control. */
class TALV_EXPORT TALV_COMPortMac : public TALV_COMPort {
public:
    /** Both are borrowed and may be null. */
    TALV_COMPortMac(Tessarine::IHostClasses* hostClasses, TALV_DataManager* dataManager);

    void initialize() override;
    int32_t openPort() override;
    int32_t closePort() override;
    int32_t sendMessage(const unsigned char* data, int32_t size) override;
    int32_t receiveMessage() override;
    void updateCOMInfo() override;

private:
    void configure();
    bool store(const unsigned char* data, int32_t count);

    Tessarine::IHostClasses* hostClasses;
    int32_t portHandle = -1;  // file descriptor; the reader thread sees it while it runs
    termios savedSettings{};  // what the device had before
    TALV_DataManager* dataManager;
};

}  // namespace TALV
