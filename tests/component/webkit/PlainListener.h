#pragma once

#include "linux/gobject/GLibHandles.h"
#include "linux/gobject/GObjectPointer.h"

#include <gio/gio.h>

#include <string>
#include <string_view>
#include <vector>

namespace kelo::test {

/// Listens without encryption on a free loopback port, notes whether it is sent anything, and
/// answers with a file. A connection alone does not count: the engine opens one in advance for a
/// link that is clicked. Works while the main loop runs.
class PlainListener {
public:
    PlainListener()
        : service(gobject::GObjectPointer<GSocketService>::adopt(g_socket_service_new())),
          port(g_socket_listener_add_any_inet_port(G_SOCKET_LISTENER(service.get()), nullptr,
                                                   nullptr)) {
        g_signal_connect(service.get(), "incoming",
                         G_CALLBACK(+[](GSocketService*, GSocketConnection* connection, GObject*,
                                        PlainListener* self) -> gboolean {
                             self->awaitBytes(connection);
                             return TRUE;
                         }),
                         this);
    }
    ~PlainListener() {
        g_socket_service_stop(service.get());
        g_signal_handlers_disconnect_by_data(service.get(), this);
        g_cancellable_cancel(end.get());
    }
    PlainListener(const PlainListener&) = delete;
    PlainListener& operator=(const PlainListener&) = delete;

    std::string address() const { return "http://localhost:" + std::to_string(port) + "/"; }
    std::string host() const { return "localhost:" + std::to_string(port); }
    bool wasAsked() const { return asked; }

private:
    void answer() {
        asked = true;
        static constexpr std::string_view reply =
            "HTTP/1.1 200 OK\r\nContent-Type: application/x-file\r\nContent-Length: 8\r\n"
            "Content-Disposition: attachment; filename=plain.txt\r\n\r\ncontents";
        for (const auto& connection : connections)
            g_output_stream_write_all(g_io_stream_get_output_stream(G_IO_STREAM(connection.get())),
                                      reply.data(), reply.size(), nullptr, nullptr, nullptr);
    }
    void awaitBytes(GSocketConnection* connection) {
        const GAsyncReadyCallback arrived = [](GObject* stream, GAsyncResult* result,
                                               gpointer self) {
            GError* error = nullptr;
            GBytes* const bytes =
                g_input_stream_read_bytes_finish(G_INPUT_STREAM(stream), result, &error);
            const gobject::GErrorPointer failure(error);
            if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED))
                return;
            const gobject::GBytesPointer owned(bytes);
            if (owned && g_bytes_get_size(bytes) > 0)
                static_cast<PlainListener*>(self)->answer();
        };
        connections.push_back(gobject::GObjectPointer<GSocketConnection>::share(connection));
        g_input_stream_read_bytes_async(g_io_stream_get_input_stream(G_IO_STREAM(connection)), 1,
                                        G_PRIORITY_DEFAULT, end.get(), arrived, this);
    }

    gobject::GObjectPointer<GSocketService> service;
    gobject::GObjectPointer<GCancellable> end =
        gobject::GObjectPointer<GCancellable>::adopt(g_cancellable_new());
    std::vector<gobject::GObjectPointer<GSocketConnection>> connections;
    guint16 port;
    bool asked = false;
};

} // namespace kelo::test
