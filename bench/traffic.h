#pragma once

#include "sampling/linux/filedescriptor.h"

#include <QTimer>

/// A network interface whose counters grow, so that rates change from tick to tick. Packets go from
/// one end of a virtual cable to its other end and are thrown away there. Ends the benchmark when
/// the interface cannot be had.
class Traffic
{
public:
    /// Starts it in the network that the benchmark has entered; flows while the event loop runs.
    Traffic();
    /// Stops it or lets it flow again.
    void setFlowing(bool flowing);

private:
    void sendSome();

    FileDescriptor m_socket;
    QTimer m_timer;
    int m_turn = 0;
};
