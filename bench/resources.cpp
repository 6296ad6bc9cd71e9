#include "bench/resources.h"

#include "bench/programs.h"
#include "tests/support/xcbrequests.h"

#include <xcb/res.h>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

ResourceWatch::ResourceWatch(std::uint32_t window) : m_window(window)
{
    if (window == 0)
        return;
    m_connection.reset(xcb_connect(nullptr, nullptr));
    const XcbReply<xcb_res_query_version_reply_t> version(xcb_res_query_version_reply(
        m_connection.get(), xcb_res_query_version(m_connection.get(), 1, 2), nullptr));
    if (!version) {
        std::fputs("The display does not tell its clients' resources.\n", stderr);
        std::exit(1);
    }
}

Resources ResourceWatch::now() const
{
    Resources resources;
    resources.resident = memoryUseOf(::getpid()).resident;
    // The folder itself is open while it is read.
    const std::filesystem::directory_iterator files("/proc/self/fd");
    resources.descriptors = double(std::distance(begin(files), end(files))) - 1;
    if (!m_connection)
        return resources;

    xcb_connection_t *connection = m_connection.get();
    const XcbReply<xcb_res_query_client_resources_reply_t> counts(
        xcb_res_query_client_resources_reply(
            connection, xcb_res_query_client_resources(connection, m_window), nullptr));
    const XcbReply<xcb_res_query_client_pixmap_bytes_reply_t> pixmaps(
        xcb_res_query_client_pixmap_bytes_reply(
            connection, xcb_res_query_client_pixmap_bytes(connection, m_window), nullptr));
    if (!counts || !pixmaps) {
        std::fputs("The display did not tell the window's resources.\n", stderr);
        std::exit(1);
    }
    const xcb_res_type_t *types = xcb_res_query_client_resources_types(counts.get());
    const int count = xcb_res_query_client_resources_types_length(counts.get());
    for (int i = 0; i < count; ++i)
        resources.serverResources += types[i].count;
    constexpr double kibibyte = 1024;
    constexpr double overflow = 4294967296.0;
    resources.serverPixmaps
        = (pixmaps->bytes + overflow * double(pixmaps->bytes_overflow)) / kibibyte;
    return resources;
}
