#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <memory>

/// What a process holds at a moment.
struct Resources
{
    double resident = 0; ///< memory, KiB: Rss of /proc/PID/smaps_rollup
    double descriptors = 0; ///< open files
    double serverResources = 0; ///< windows, pixmaps, graphics contexts etc. on the X server
    double serverPixmaps = 0; ///< KiB that its pixmaps take there
};

/// Looks at what this process holds, at its X server too if it has one.
class ResourceWatch
{
public:
    /// `window` is one of the process's windows on the display of the environment; 0 when it is not
    /// on an X server. Ends the benchmark when the server cannot be asked.
    explicit ResourceWatch(std::uint32_t window);

    Resources now() const;

private:
    struct Disconnect
    {
        void operator()(xcb_connection_t *connection) const { xcb_disconnect(connection); }
    };

    std::uint32_t m_window;
    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
};
