#pragma once

#include <hexmire/driver/ILinkMachine.h>

#include <asio/ip/tcp.hpp>

#include <string>

namespace hexmire::link {

/// Prepares a connected or connecting socket: non-blocking, small writes go out at once, a dead
/// peer is noticed within about a minute, and child processes do not inherit it. Options that the
/// system refuses are left as they are; only non-blocking mode must work.
void PrepareStream(asio::ip::tcp::socket& socket, asio::error_code& error);

/// Opens, binds and listens. An old connection on the same port does not stand in the way, a second
/// listener does.
void OpenListener(asio::ip::tcp::acceptor& acceptor,
                  const asio::ip::tcp::endpoint& endpoint,
                  asio::error_code& error);

/// Both ends of a connection; an IPv4 address in IPv6 clothes is shown as IPv4.
[[nodiscard]] Endpoints EndpointsOf(const asio::ip::tcp::socket& socket);

/// A numeric address written as EndpointsOf writes it; anything else as it stands.
[[nodiscard]] std::string CanonicalAddress(const std::string& address);

[[nodiscard]] SystemFailure FailureOf(const asio::error_code& error);

}  // namespace hexmire::link
