#pragma once

#include "sampling/systemqueries.h"

class NetlinkSocket;

/// All interfaces of the network namespace in the kernel's order, from one link dump over a
/// NETLINK_ROUTE socket, rtnetlink(7); no value when the dump cannot be had.
std::optional<std::vector<InterfaceRow>> dumpInterfaces(NetlinkSocket &socket);
