#pragma once

#include "sampling/linux/filedescriptor.h"

#include <sys/types.h>

#include <string>
#include <vector>

/// How many processes hold what on a machine.
struct LoadShape
{
    std::string name;
    int processes = 0;
    int tcpSockets = 0; ///< a process: two listeners, the others connected in pairs
    int udpSockets = 0; ///< a process
    int otherFiles = 0; ///< a process
};

/// Processes that hold loopback sockets and other files until this object ends.
class Load
{
public:
    /// Starts the processes and waits until all hold what they shall. Every tenth belongs to
    /// `owner` and the others to root, if `owner` is not 0.
    explicit Load(const LoadShape &shape, uid_t owner = 0);
    /// The same, with an executable of its own name for each process, as the applications of a
    /// desktop have: links to this program in `folder`, which is on the same file system. main()
    /// then has to call holdIfAsked() first.
    Load(const LoadShape &shape, const std::string &folder);
    ~Load();
    Load(const Load &) = delete;
    Load &operator=(const Load &) = delete;

    /// Lets a tenth of the sockets be closed and as many be opened anew, and waits for it. Half of
    /// the processes get them at the same descriptors again, half at others.
    void churn();

    /// How many sockets the processes hold.
    int sockets() const;

private:
    struct Process
    {
        pid_t pid = 0;
        FileDescriptor control;
    };

    Load(const LoadShape &shape, uid_t owner, const std::string &folder);

    LoadShape m_shape;
    std::vector<Process> m_processes;
    bool m_oddTurn = false;
};

/// Does not return in a process that was started as one of a load's.
void holdIfAsked(int argc, char *argv[]);

/// Moves the process into a network namespace of its own with the loopback up, so that the loads
/// are the only sockets and do not touch the machine's own ports. Ends the process when it cannot.
void enterBenchNetwork();
