#include "FreePort.h"

#include <hexmire/hosting/FileDescriptor.h>

#include "Failure.h"
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace hexmire::program {

std::int32_t FindFreePort() {
    const FileDescriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (!socket.IsOpen() || ::bind(socket.Get(), generic, length) != 0 ||
        ::getsockname(socket.Get(), generic, &length) != 0)
        throw Failure("no free TCP port on 127.0.0.1");
    return ntohs(address.sin_port);
}

}  // namespace hexmire::program
