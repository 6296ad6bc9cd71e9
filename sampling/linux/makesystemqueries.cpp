#include "sampling/linux/linuxsystemqueries.h"

// Alone in its file, so that a program which brings its own backend can still use these classes.
std::unique_ptr<SystemQueries> makeSystemQueries()
{
    return std::make_unique<LinuxSystemQueries>();
}
