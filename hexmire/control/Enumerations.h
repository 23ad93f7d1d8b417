#pragma once

#include <cstdint>

namespace hexmire {

/// Serial line speeds in bit/s.
enum enmBaudRate : std::int32_t {
    BaudRate150 = 150,
    BaudRate300 = 300,
    BaudRate1200 = 1200,
    BaudRate2400 = 2400,
    BaudRate4800 = 4800,
    BaudRate9600 = 9600,
    BaudRate19200 = 19200,
};

/// Kinds of link.
enum enmPortType : std::int32_t {
    PortTypeRS232 = 1,    ///< SECS-I (SEMI E4) on a serial line
    PortTypeHSMS = 2,     ///< HSMS (SEMI E37)
    PortTypeTCPIP = 3,    ///< SECS-I blocks over TCP
    PortTypeHSMS_SS = 4,  ///< HSMS single session (SEMI E37.1)
};

/// Who opens the TCP connection.
enum enmConnectionMode : std::int32_t {
    ConnectionModeActive = 1,
    ConnectionModePassive = 2,
    ConnectionModeAlternating = 3,
};

}  // namespace hexmire
